#pragma once

#include <gtest/gtest.h>

#include <charconv>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "accredit/host/MCMV.h"

// Tables that tests walk through, in text files beside them: the rows of TEST(Suite, Name) stand in
// Suite.txt under [Name]. Bars set apart the cells of a row, the first of which is its label; a
// line that begins with # is a comment. In a cell \n, \r, \t, \\ and \xHH stand for what they are
// in C++.

namespace fakes {

using Numbers = std::vector<double>;

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

/// A number as C writes it; "M" and "missing" are the missing value.
inline double ToNumber(const std::string& text) {
    if (text == "M" || text == "missing") return MCMV::Missing();
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    EXPECT_TRUE(!text.empty() && *end == '\0') << "'" << text << "' is no number";
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

/// A row of a table. The cells behind the label are numbered from 0.
class Row {
public:
    explicit Row(const std::string& line) : mCells(Split(line, '|')) {}

    std::size_t Size() const { return mCells.size() - 1; }
    const std::string& Label() const { return mCells[0]; }

    std::string Text(std::size_t cell) const {
        const std::string& raw = mCells[cell + 1];
        std::string text;
        for (std::size_t i = 0; i < raw.size(); ++i) {
            if (raw[i] != '\\') {
                text += raw[i];
            } else if (raw[++i] == 'x') {
                text += static_cast<char>(std::stoi(raw.substr(i + 1, 2), nullptr, 16));
                i += 2;
            } else {
                text += raw[i] == 'n' ? '\n' : raw[i] == 'r' ? '\r' : raw[i] == 't' ? '\t' : raw[i];
            }
        }
        return text;
    }
    double Number(std::size_t cell) const { return ToNumber(mCells[cell + 1]); }
    fakes::Numbers Numbers(std::size_t cell) const { return ToNumbers(mCells[cell + 1]); }
    /// Lists, each ended by a semicolon that only the last may lack.
    std::vector<fakes::Numbers> Lists(std::size_t cell) const {
        std::vector<fakes::Numbers> lists;
        for (const std::string& part : Split(mCells[cell + 1], ';')) {
            lists.push_back(ToNumbers(part));
        }
        return lists;
    }

private:
    std::vector<std::string> mCells;
};

/// The rows of the running test, which must have so many cells behind their labels.
inline std::vector<Row> Rows(std::size_t cells) {
    const auto* test = testing::UnitTest::GetInstance()->current_test_info();
    std::ifstream file(std::string(ACCREDIT_TABLE_FOLDER "/") + test->test_suite_name() + ".txt");
    std::vector<Row> rows;
    bool here = false;
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line[0] == '#') continue;
        if (line[0] == '[') {
            here = line == std::string("[") + test->name() + "]";
        } else if (here) {
            rows.emplace_back(line + " ");  // so that an empty last cell is a cell
            EXPECT_EQ(rows.back().Size(), cells) << line;
        }
    }
    EXPECT_FALSE(rows.empty()) << "no table";
    return rows;
}

}  // namespace fakes
