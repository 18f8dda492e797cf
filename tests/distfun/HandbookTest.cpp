#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>

#include "Functions.h"
#include "Precision.h"
#include "fakes/Tables.h"

namespace {

// One line of the handbook, with nothing read from it left unused.
void CheckLine(const std::string& line, double tolerance) {
    std::istringstream words(line);
    std::string name;
    words >> name;
    const auto* const f = std::find_if(kFunctions.begin(), kFunctions.end(),
                                       [&](const Function& row) { return row.name == name; });
    ASSERT_NE(f, kFunctions.end()) << "no such function";
    std::array<double, 3> arguments{};
    std::string word;
    for (std::size_t i = 0; words >> word && word != "="; ++i)
        arguments.at(i) = fakes::ToNumber(word);
    ASSERT_TRUE(words >> word) << "no value";
    const double want = fakes::ToNumber(word);
    long wantCode = 0;
    words >> word >> wantCode;
    ASSERT_TRUE(words.eof()) << "something behind the value";

    long code = (f->kind & kCoded) != 0 ? 99 : 0;
    const double got = f->call(arguments[0], arguments[1], arguments[2], code);
    EXPECT_LE(RelativeError(got, want), tolerance) << "is " << ::testing::PrintToString(got);
    EXPECT_EQ(code, wantCode);
}

// A test for each line, by its function and its number.
bool AddLines(const std::string& file) {
    const std::string path = ACCREDIT_TABLE_FOLDER "/" + file;
    fakes::TablesRead().insert(path);
    std::ifstream lines(path);
    std::string tolerance;
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        const std::string name = line.substr(0, line.find(' '));
        if (line.empty() || line[0] == '#') continue;
        if (name == "tolerance") {
            tolerance = line.substr(name.size());
            continue;
        }
        fakes::AddTest(
            "Handbook",
            name + "/" + file.substr(0, file.find('.')) + "_line_" + std::to_string(number), path,
            number, [=] { CheckLine(line, fakes::Exactly(1, fakes::ToNumbers(tolerance))[0]); });
    }
    return number > 200;
}

const bool kAdded = AddLines("handbook.txt") && AddLines("references.txt");

TEST(Handbook, IsReadToItsEnd) { EXPECT_TRUE(kAdded); }

}  // namespace
