#pragma once

#include <cstddef>
#include <sstream>
#include <string>
#include <vector>

#include "TempFile.h"
#include "app/commands/Program.h"

namespace fakes {

using Arguments = std::vector<std::string>;

struct Outcome {
    int status = -1;
    std::string out;
    std::string err;
};

/// Runs the program with these arguments.
inline Outcome Accredit(const Arguments& arguments) {
    std::vector<const char*> argv{"accredit"};
    for (const std::string& argument : arguments) argv.push_back(argument.c_str());
    std::ostringstream out;
    std::ostringstream err;
    const int status = app::RunProgram(static_cast<int>(argv.size()), argv.data(), out, err, false);
    return {status, out.str(), err.str()};
}

/// Files for the program: A and B with given contents, and R, which holds "before".
class Files {
public:
    Files(const std::string& a, const std::string& b)
        : mFiles{{'A', TempFile(a)}, {'B', TempFile(b)}, {'R', TempFile("before")}} {}

    /// Runs commands that have semicolons between them and gives what the last one did, in which
    /// the files have their names. Words have blanks between them; A, B and R, and =A and so on at
    /// the end of one, are the files, and '' is an empty word.
    Outcome Run(const std::string& commands) const {
        Outcome outcome;
        std::istringstream stream(commands);
        for (std::string command; std::getline(stream, command, ';');) {
            Arguments arguments;
            std::istringstream words(command);
            for (std::string word; words >> word;)
                arguments.push_back(word == "''" ? "" : Path(word));
            outcome = Accredit(arguments);
        }
        for (const auto& [name, file] : mFiles) {
            for (std::string* text : {&outcome.out, &outcome.err}) {
                for (std::size_t at = 0; (at = text->find(file.Path())) != std::string::npos;) {
                    text->replace(at, file.Path().size(), 1, name);
                }
            }
        }
        return outcome;
    }

    /// What R holds now.
    std::string Output() const { return mFiles[2].file.Read(); }

private:
    std::string Path(const std::string& word) const {
        for (const auto& [name, file] : mFiles) {
            const bool ends = !word.empty() && word.back() == name;
            if (ends && word.size() == 1) return file.Path();
            if (ends && word[word.size() - 2] == '=') {
                return word.substr(0, word.size() - 1) + file.Path();
            }
        }
        return word;
    }

    struct Named {
        char name;
        TempFile file;
    };

    Named mFiles[3];
};

}  // namespace fakes
