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
void CheckLine(const std::string& line, double& tolerance) {
    std::istringstream words(line);
    std::string name;
    words >> name;
    if (name == "tolerance") {
        ASSERT_TRUE(words >> tolerance);
        return;
    }
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

void CheckFile(const char* path) {
    std::ifstream file(path);
    double tolerance = 0.0;
    int lines = 0;
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line[0] == '#') continue;
        SCOPED_TRACE(line);
        CheckLine(line, tolerance);
        ++lines;
    }
    EXPECT_GT(lines, 200) << path << " was not read to its end";
}

TEST(Handbook, EveryLine) { CheckFile(ACCREDIT_TABLE_FOLDER "/handbook.txt"); }

TEST(Handbook, EveryReference) { CheckFile(ACCREDIT_TABLE_FOLDER "/references.txt"); }

}  // namespace
