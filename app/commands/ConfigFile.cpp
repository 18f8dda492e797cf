#include "app/commands/ConfigFile.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <fstream>
#include <sstream>
#include <string_view>
#include <system_error>
#include <vector>

#include "app/base/Errors.h"
#include "app/base/Printable.h"

namespace app {

namespace {

// Longer files are something else.
constexpr std::size_t kMaxSize = 1'048'576;

std::string TextOf(const std::string& path, const std::string& name) {
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    std::string text(kMaxSize + 1, '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (!file.eof() && file.gcount() == 0) {
        throw InputError(name + ": " + std::generic_category().message(errno ? errno : EIO));
    }
    text.resize(static_cast<std::size_t>(file.gcount()));
    if (text.size() > kMaxSize) throw InputError(name + ": this is too long for a configuration");
    return text;
}

// Whether the value of a line begins with a list that is not all of it. The parser would go on to
// the next line that ends with a bracket.
bool HasTextBehindList(std::string_view line) {
    constexpr std::string_view kBlanks = " \t\r";
    const std::size_t begin = line.find_first_not_of(kBlanks, line.find('=') + 1);
    return line.find('=') < begin && begin < line.size() && line[begin] == '[' &&
           line[line.find_last_not_of(kBlanks)] != ']';
}

// The text without what the parser would misunderstand: it ends a value at every #, also within
// quotes, takes what is not closed for the value, and makes values of blanks before commas.
std::string WithoutComments(const std::string& text, const std::string& name) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    const bool hasMark = text.compare(0, kByteOrderMark.size(), kByteOrderMark) == 0;
    std::istringstream lines(text.substr(hasMark ? kByteOrderMark.size() : 0));
    std::string result;
    std::size_t resultLine = 0;  // where the last line of the result begins
    int lineNumber = 0;
    int openedOn = 0;
    for (std::string line; std::getline(lines, line);) {
        ++lineNumber;
        const auto refuse = [&name](int number, const char* problem) {
            throw InputError(fmt::format("{}:{}: {}", name, number, problem));
        };
        const std::size_t begin = std::min(line.find_first_not_of(" \t\r"), line.size());
        const bool isSection = line.find('=') == std::string::npos && begin < line.size() &&
                               line[begin] == '[' && openedOn == 0;
        char quote = 0;
        std::size_t end = begin;
        if (begin < line.size() && line[begin] == ';') continue;
        for (; end < line.size() && (quote != 0 || line[end] != '#'); ++end) {
            const char byte = line[end];
            if (byte == '\0') refuse(lineNumber, "a NUL byte, this is not a text file");
            if (quote != 0) {
                if (byte == quote) quote = 0;
            } else if (byte == '"' || byte == '\'' || byte == '`') {
                quote = byte;
            } else if (byte == '[' && !isSection) {
                openedOn = lineNumber;
            } else if (byte == ']') {
                openedOn = 0;
            } else if (byte == ',') {
                result.erase(result.find_last_not_of(" \t\r") + 1);
            }
            result += byte;
        }
        if (quote != 0) refuse(lineNumber, "a quote is not closed");
        // A list may go on over lines, for which the parser wants it to begin with a value.
        if (openedOn > 0) {
            result += ' ';
            continue;
        }
        const std::string_view made = std::string_view(result).substr(resultLine);
        // The parser would take each part for a section within another.
        if (made.substr(0, made.find('=')).find('.') != std::string_view::npos) {
            refuse(lineNumber, "there is no key or section with a point in its name");
        }
        if (HasTextBehindList(made)) {
            refuse(lineNumber, "there is text behind the bracket that closes a list");
        }
        result += '\n';
        resultLine = result.size();
    }
    if (openedOn > 0) {
        throw InputError(fmt::format("{}:{}: a bracket is not closed", name, openedOn));
    }
    return result;
}

}  // namespace

void ReadConfigFile(const std::string& path, const std::string& command, const ConfigKeys& keys) {
    const std::string name = path.empty() ? "\"\"" : Printable(path);
    std::istringstream input(WithoutComments(TextOf(path, name), name));
    CLI::ConfigBase parser;
    parser.comment('\0');
    for (const CLI::ConfigItem& item : parser.from_config(input)) {
        // The parser marks where sections begin and end.
        if (item.name == "++" || item.name == "--") continue;
        const auto known = keys.find(item.name);
        const std::string section = item.parents.empty() ? command : item.parents.front();
        if (known == keys.end() || item.parents.size() > 1 ||
            (section != "learn" && section != "check")) {
            throw InputError(
                fmt::format("{}: there is no key \"{}\"", name, Printable(item.fullname())));
        }
        if (section != command) continue;
        for (const std::string& value : item.inputs) {
            try {
                known->second(value);
            } catch (const UsageError& error) {
                throw InputError(fmt::format("{}: {}", name, error.what()));
            }
        }
    }
}

}  // namespace app
