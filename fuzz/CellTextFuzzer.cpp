// Texts of cells and files of options. The first byte of the input chooses: a text of any bytes,
// of which what is told must agree; a number as spreadsheets show it, or a date as the standard
// library writes it, known as such; a file of any bytes, which is taken or refused; a file that is
// written from texts and gives them back.

#include <array>
#include <ctime>

#include "Fuzzing.h"
#include "MemoryFile.h"
#include "accredit/documents/NumberText.h"
#include "app/base/Errors.h"
#include "app/commands/ConfigFile.h"
#include "app/data/CellText.h"

using fuzz::Input;
using fuzz::Require;

namespace {

template <std::size_t kCount>
const char* OneOf(Input& input, const std::array<const char*, kCount>& texts) {
    return texts[input.Below(kCount)];
}

void CheckAnyText(std::string_view text) {
    // Longer texts are no numbers of spreadsheets.
    constexpr std::size_t kLongest = 64;
    const std::optional<double> number = app::ParseCell(text, false);
    const std::optional<double> withComma = app::ParseCell(text, true);
    const bool isDate = app::IsDate(text);
    const bool isSpreadsheetNumber = app::IsSpreadsheetNumber(text);
    Require(!number || !isDate, "no number is a date");
    Require(!isSpreadsheetNumber || !isDate, "no number of a spreadsheet is a date");

    std::string replaced(text);
    const std::size_t comma = text.find(',');
    if (comma != text.npos) replaced[comma] = '.';
    Require(
        withComma == (text.find('.') == text.npos ? app::ParseCell(replaced, false) : std::nullopt),
        "a decimal comma stands for a point");
    if (withComma && comma != text.npos && text.size() <= kLongest) {
        Require(isSpreadsheetNumber, "spreadsheets show numbers with decimal commas");
    }
    if (app::IsAmbiguousComma(text)) {
        replaced.erase(comma, 1);
        Require(withComma && app::ParseCell(replaced, false), "the comma may mean either");
    }
}

std::string Digits(Input& input, std::size_t count) {
    std::string digits;
    while (digits.size() < count) digits += static_cast<char>('0' + input.Below(10));
    return digits;
}

std::string SpreadsheetNumber(Input& input) {
    constexpr std::array<const char*, 8> kSeparators = {",",      ".",      "'",      " ",
                                                        "\u2019", "\u00A0", "\u202F", "\u2009"};
    constexpr std::array<const char*, 4> kSigns = {"", "-", "+", "\u2212"};
    constexpr std::array<const char*, 8> kUnits = {"",        "%",   " %", "$",
                                                   " \u20AC", "USD", "kr", "\u00A0EUR"};
    const std::string separator = OneOf(input, kSeparators);
    std::string number = static_cast<char>('1' + input.Below(9)) + Digits(input, input.Below(3));
    for (std::size_t groups = 1 + input.Below(4); groups > 0; --groups) {
        number += separator + Digits(input, 3);
    }
    if (input.Flag()) number += (separator == "," ? "." : ",") + Digits(input, 1 + input.Below(4));
    number = OneOf(input, kSigns) + number;
    const std::string unit = OneOf(input, kUnits);
    number = input.Flag() ? unit + number : number + unit;
    return input.Flag() ? "(" + number + ")" : number;
}

std::string Date(Input& input) {
    constexpr std::array<const char*, 26> kFormats = {"%Y-%m-%d",
                                                      "%Y/%m/%d",
                                                      "%Y.%m.%d",
                                                      "%Y-%m",
                                                      "%d.%m.%Y",
                                                      "%d.%m.%y",
                                                      "%m/%d/%Y",
                                                      "%d/%m/%y",
                                                      "%d-%m-%Y",
                                                      "%d-%b-%Y",
                                                      "%d-%b-%y",
                                                      "%d %B %Y",
                                                      "%b %d, %Y",
                                                      "%B %Y",
                                                      "%A, %B %d, %Y",
                                                      "%c",
                                                      "%Y-%m-%d %H:%M",
                                                      "%Y-%m-%d %T",
                                                      "%Y-%m-%dT%TZ",
                                                      "%Y-%m-%dT%T+01:00",
                                                      "%m/%d/%Y %I:%M %p",
                                                      "%d.%m.%Y %H:%M",
                                                      "%a, %d %b %Y %T GMT",
                                                      "%Y%m%dT%H%M%SZ",
                                                      "%m/%d/%Y, %T",
                                                      "%d/%b/%Y:%T +0000"};
    std::tm time = {};
    time.tm_year = static_cast<int>(input.Below(256));
    time.tm_mon = static_cast<int>(input.Below(12));
    time.tm_mday = static_cast<int>(1 + input.Below(31));
    time.tm_wday = static_cast<int>(input.Below(7));
    time.tm_hour = static_cast<int>(input.Below(24));
    time.tm_min = static_cast<int>(input.Below(60));
    time.tm_sec = static_cast<int>(input.Below(60));
    std::array<char, 64> text;
    const char* const format = OneOf(input, kFormats);
    std::string date(text.data(), std::strftime(text.data(), text.size(), format, &time));
    const bool isUpper = input.Flag();
    for (char& byte : date) {
        if (isUpper) byte = static_cast<char>(std::toupper(byte));
    }
    return date;
}

using Values = std::vector<std::pair<std::string, std::string>>;

// The keys and values in a file, nothing if it is refused.
std::optional<Values> ReadValues(const std::string& path, const std::string& command) {
    Values values;
    app::ConfigKeys keys;
    for (const char* key : {"ignore", "missing"}) {
        keys[key] = [&values, key](const std::string& value) { values.emplace_back(key, value); };
    }
    try {
        app::ReadConfigFile(path, command, keys);
    } catch (const app::InputError&) {
        return std::nullopt;
    }
    return values;
}

// A text in quotes, which cannot hold all characters.
std::string Quoted(Input& input, std::string& text) {
    for (const char byte : input.Text()) {
        if (std::string_view("\0\n\"'`\\", 6).find(byte) == std::string_view::npos) text += byte;
    }
    const std::string quote = input.Flag() ? "\"" : "'";
    return quote + text + quote;
}

// A file in which all texts stand in quotes, with blanks, line ends and comments between them.
std::string WrittenFile(Input& input, Values& values) {
    constexpr std::array<const char*, 4> kBlanks = {"", " ", "\t", "  "};
    constexpr std::array<const char*, 4> kListBlanks = {"", " ", "\n", "  # [\"comment\n\t"};
    std::string file;
    while (!input.Empty()) {
        const std::string key = input.Flag() ? "ignore" : "missing";
        file += key + OneOf(input, kBlanks) + "=" + OneOf(input, kBlanks);
        const std::size_t count = input.Below(4);
        std::string list;
        for (std::size_t i = 0; i < count; ++i) {
            values.emplace_back(key, "");
            list += (i > 0 ? "," : "") + std::string(OneOf(input, kListBlanks));
            list += Quoted(input, values.back().second) + OneOf(input, kListBlanks);
        }
        if (count > 0) {
            file += "[" + list + "]";
        } else {
            values.emplace_back(key, "");
            file += Quoted(input, values.back().second);
        }
        file += OneOf(input, kBlanks) + std::string(input.Flag() ? "# it's\n" : "\r\n");
    }
    return file;
}

// Both commands take the same files, and a further line is a further value for one or both.
void CheckFile(std::string content) {
    std::array<std::optional<Values>, 2> before;
    std::array<std::optional<Values>, 2> after;
    for (auto* each : {&before, &after}) {
        const fuzz::MemoryFile file(content);
        *each = {ReadValues(file.Path(), "learn"), ReadValues(file.Path(), "check")};
        Require((*each)[0].has_value() == (*each)[1].has_value(), "commands take the same files");
        content += "\nignore = further\n";
    }
    if (!before[0] || !after[0]) return;
    for (std::optional<Values>& each : before) each->emplace_back("ignore", "further");
    Require(before[0] == after[0] || before[1] == after[1], "no line is lost");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    switch (input.Below(5)) {
        case 0:
            CheckAnyText(MADocuments::TrimBlanks(input.Take(size)));
            break;
        case 1: {
            const std::string number = SpreadsheetNumber(input);
            Require(app::IsSpreadsheetNumber(number), "a number of a spreadsheet is known as such");
            CheckAnyText(number);
            break;
        }
        case 2: {
            const std::string date = Date(input);
            Require(app::IsDate(date), "a date is known as such");
            CheckAnyText(date);
            break;
        }
        case 3:
            CheckFile(std::string(input.Take(size)));
            break;
        default: {
            Values values;
            const fuzz::MemoryFile file(WrittenFile(input, values));
            Require(ReadValues(file.Path(), "learn") == values, "a file gives its texts back");
        }
    }
    return 0;
}
