#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "accredit/host/MCMV.h"

// Tables of cases in text files beside the tests, whose grammar stands in tests/README.md. What the
// grammar or the test of a table does not know is a std::invalid_argument, which fails the row.

namespace fakes {

using Numbers = std::vector<double>;

[[noreturn]] inline void Refuse(const std::string& text, const std::string& why) {
    throw std::invalid_argument("'" + text + "' " + why);
}

inline std::string Trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? ""
                                      : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

inline std::vector<std::string> Split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);) parts.push_back(Trimmed(part));
    return parts;
}

/// A decimal number, "inf", "nan" or one of these with a minus; "M" and "missing" are the missing
/// value.
inline double ToNumber(const std::string& text) {
    if (text == "M" || text == "missing") return MCMV::Missing();
    double value = 0.0;
    const char* end = text.data() + text.size();
    const auto [parsed, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || parsed != end) Refuse(text, "is no number");
    return value;
}

/// Numbers with blanks between them.
inline Numbers ToNumbers(const std::string& text) {
    Numbers numbers;
    std::istringstream stream(text);
    for (std::string word; stream >> word;) numbers.push_back(ToNumber(word));
    return numbers;
}

/// The shortest text that gives back exactly these numbers, as a table has it.
inline std::string ToText(const Numbers& numbers) {
    std::string text;
    for (const double number : numbers) {
        char digits[32] = {};
        std::to_chars(digits, digits + sizeof digits, number);
        if (!text.empty()) text += ' ';
        text += MCMV::IsMissing(number) ? "M" : number != number ? "nan" : digits;
    }
    return text;
}

/// The numbers, of which there must be so many.
inline const Numbers& Exactly(std::size_t count, const Numbers& numbers) {
    if (numbers.size() != count) {
        Refuse(ToText(numbers), "should be " + std::to_string(count) + " numbers");
    }
    return numbers;
}

/// A text with its escapes, \n \r \t \\ and \xHH, replaced by what they stand for.
inline std::string Unescaped(const std::string& raw) {
    std::string text;
    for (std::size_t i = 0; i < raw.size(); ++i) {
        constexpr std::string_view kLetters = "nrt\\";
        if (raw[i] != '\\') {
            text += raw[i];
        } else if (const std::size_t letter = kLetters.find(raw[++i]); letter < kLetters.size()) {
            text += "\n\r\t\\"[letter];
        } else {
            unsigned byte = 0;
            const char* digits = raw.c_str() + i + 1;
            const bool two = raw[i] == 'x' && i + 2 < raw.size();
            if (!two || std::from_chars(digits, digits + 2, byte, 16).ptr != digits + 2) {
                Refuse(raw, "has an unknown escape");
            }
            text += static_cast<char>(byte);
            i += 2;
        }
    }
    return text;
}

/// A row of a table. The cells behind the label are numbered from 0.
class Row {
public:
    explicit Row(const std::string& line) : mCells(Split(line + ' ', '|')) {}

    std::size_t Size() const { return mCells.size() - 1; }
    const std::string& Label() const { return mCells[0]; }

    std::string Text(std::size_t cell) const { return Unescaped(Raw(cell)); }
    double Number(std::size_t cell) const { return ToNumber(Raw(cell)); }
    fakes::Numbers Numbers(std::size_t cell) const { return ToNumbers(Raw(cell)); }
    /// Lists, each ended by a semicolon that only the last may lack.
    std::vector<fakes::Numbers> Lists(std::size_t cell) const {
        std::vector<fakes::Numbers> lists;
        for (const std::string& part : Split(Raw(cell), ';')) lists.push_back(ToNumbers(part));
        return lists;
    }
    /// Whether a cell has the first of two words; a third one is an error.
    bool Is(std::size_t cell, const std::string& word, const std::string& other) const {
        if (Raw(cell) != word && Raw(cell) != other) {
            Refuse(Raw(cell), "should be " + word + " or " + other);
        }
        return Raw(cell) == word;
    }

private:
    const std::string& Raw(std::size_t cell) const { return mCells.at(cell + 1); }

    std::vector<std::string> mCells;
};

/// A line of a table file and its section, as "[Name]". A section's own line has no text.
struct TableLine {
    std::string section, text;
    int number;
};

inline std::vector<TableLine> ReadTable(const std::string& path) {
    std::vector<TableLine> lines;
    std::ifstream file(path);
    std::string section;
    int number = 0;
    for (std::string line; std::getline(file, line);) {
        ++number;
        if (line.empty() || line[0] == '#') continue;
        if (line[0] == '[') {
            section = line;
            line.clear();
        }
        lines.push_back({section, line, number});
    }
    return lines;
}

/// The file and the section of every table that a test reads, as "path [Name]", and the path alone
/// of a file that has another form.
inline std::set<std::string>& TablesRead() {
    static std::set<std::string> tables;
    return tables;
}

/// One more test, which runs `body`; an exception that leaves it is a failure.
inline void AddTest(const std::string& suite, const std::string& name, const std::string& path,
                    int line, const std::function<void()>& body) {
    struct Test : testing::Test {
        explicit Test(std::function<void()> test) : run(std::move(test)) {}
        void TestBody() override { run(); }
        std::function<void()> run;
    };
    testing::RegisterTest(suite.c_str(), name.c_str(), nullptr, nullptr, path.c_str(), line,
                          [=]() -> testing::Test* { return new Test(body); });
}

/// Every section of every table in the folder must have a test, and every row a section.
inline void FailWhereNothingIsRead() {
    for (const auto& entry : std::filesystem::directory_iterator(ACCREDIT_TABLE_FOLDER)) {
        const std::string path = entry.path().string();
        const bool table = entry.path().extension() == ".txt";
        if (!table || entry.path().filename() == "CMakeLists.txt" || TablesRead().count(path) > 0) {
            continue;
        }
        const std::vector<TableLine> lines = ReadTable(path);
        EXPECT_FALSE(lines.empty()) << path << ": nobody reads this file";
        std::set<std::string> sections;
        for (const TableLine& line : lines) {
            if (!line.text.empty() && !line.section.empty()) continue;
            const bool read = TablesRead().count(path + ' ' + line.section) > 0;
            if (read && sections.insert(line.section).second) continue;
            ADD_FAILURE() << path << ':' << line.number << ": nobody reads this";
        }
    }
}

/// A filter that names no test, such as that of a row which is gone, must not pass.
class FailsWithoutTests : public testing::EmptyTestEventListener {
    void OnTestProgramStart(const testing::UnitTest& all) override {
        if (all.test_to_run_count() > 0) return;
        std::cerr << "no such test\n";
        std::exit(1);
    }
};

/// A test for each row of the section [Name] of Suite.txt, with so many cells behind the labels.
/// Its name is Suite.Name/label, with an underscore for all in the label that is no letter or
/// digit.
inline bool AddTable(const std::string& suite, const std::string& name, std::size_t cells,
                     void (*body)(const Row& row)) {
    static const bool checked = [] {
        const std::string folder = std::filesystem::path(ACCREDIT_TABLE_FOLDER).filename();
        AddTest("Tables", "AllAreRead/" + folder, __FILE__, __LINE__, FailWhereNothingIsRead);
        testing::UnitTest::GetInstance()->listeners().Append(new FailsWithoutTests);
        return true;
    }();
    const std::string path = ACCREDIT_TABLE_FOLDER "/" + suite + ".txt";
    const std::string section = '[' + name + ']';
    TablesRead().insert(path + ' ' + section);
    std::set<std::string> names;
    for (const TableLine& line : ReadTable(path)) {
        if (line.section != section || line.text.empty()) continue;
        const Row row(line.text);
        std::string rowName = name + '/' + row.Label();
        std::replace_if(
            rowName.begin() + static_cast<std::ptrdiff_t>(name.size()) + 1, rowName.end(),
            [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
        const bool named = !row.Label().empty() && names.insert(rowName).second;
        if (!named) rowName += "/line_" + std::to_string(line.number);
        AddTest(suite, rowName, path, line.number, [=] {
            if (!named) Refuse(row.Label(), "is no label, or the name of two rows");
            if (row.Size() != cells) {
                Refuse(line.text, "should have " + std::to_string(cells) + " cells");
            }
            body(row);
        });
    }
    if (names.empty()) AddTest(suite, name, path, 0, [] { FAIL() << "no rows"; });
    return checked;
}

/// TABLE_TEST(Suite, Name, cells) { ... }: the test of one `row` of that table.
#define TABLE_TEST(Suite, Name, cells)                      \
    void Suite##Name(const fakes::Row& row);                \
    [[maybe_unused]] const bool k##Suite##Name##Added =     \
        fakes::AddTable(#Suite, #Name, cells, Suite##Name); \
    void Suite##Name([[maybe_unused]] const fakes::Row& row)

}  // namespace fakes
