#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "Folder.h"
#include "app/commands/Program.h"
#include "fakes/Documents.h"
#include "fakes/Repeats.h"

namespace fakes {

/// A folder with the files A and B of these contents, and R, which holds "before".
struct Files : Folder {
    Files(const std::string& a, const std::string& b) {
        WriteFile("A", Repeated(a));
        WriteFile("B", Repeated(b));
        WriteFile("R", "before");
    }
};

/// The program with the words of a command, which have blanks between them; '' is an empty one.
class CommandLine {
public:
    explicit CommandLine(const std::string& command) {
        std::istringstream stream(command);
        for (std::string word; stream >> word;) mWords.push_back(word == "''" ? "" : word);
        for (const std::string& word : mWords) mArguments.push_back(word.c_str());
    }
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    int Run(std::ostream& out, std::ostream& err) const {
        return app::RunProgram(static_cast<int>(mArguments.size()), mArguments.data(), out, err,
                               app::Screen(), false);
    }

private:
    std::vector<std::string> mWords;
    std::vector<const char*> mArguments{"accredit"};
};

struct Outcome {
    int status;
    std::string out;
    std::string err;
};

/// Runs commands that have semicolons between them and gives what the last one did. Those before
/// it must succeed. Reports in JSON are kept for the test that validates them.
inline Outcome Run(const std::string& commands) {
    Outcome outcome{0, "", ""};
    std::istringstream stream(commands);
    for (std::string command; std::getline(stream, command, ';');) {
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        std::ostringstream out;
        std::ostringstream err;
        const int status = CommandLine(command).Run(out, err);
        outcome = {status, out.str(), err.str()};
        const bool isReport = command.find("check ") != std::string::npos && out.str()[0] == '{';
        if (isReport) KeepReport(outcome.out);
    }
    return outcome;
}

}  // namespace fakes
