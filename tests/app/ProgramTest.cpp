#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "Accredit.h"
#include "fakes/Tables.h"

namespace {

using fakes::Outcome;
using testing::HasSubstr;

// An empty cell wants no output at all.
testing::Matcher<std::string> Says(const std::string& text) {
    return text.empty() ? testing::Matcher<std::string>("") : HasSubstr(text);
}

TABLE_TEST(Program, AnswersAndComplains, 6) {
    const fakes::Files files(row.Text(0), row.Text(1));
    const Outcome outcome = fakes::Run(row.Text(2));
    EXPECT_EQ(outcome.status, row.Number(3)) << outcome.err;
    EXPECT_THAT(outcome.out, Says(row.Text(4)));
    EXPECT_THAT(outcome.err, Says(row.Text(5)));
    // JSON is what another writer makes of what another reader takes from it.
    if (outcome.out.substr(0, 1) != "{") return;
    EXPECT_EQ(outcome.out, nlohmann::ordered_json::parse(outcome.out).dump(2) + "\n");
}

TABLE_TEST(Program, RefusesDataAndKeepsWhatWasThere, 3) {
    const fakes::Files files(row.Text(0), "");
    const Outcome outcome = fakes::Run("learn A --output R " + row.Text(1));
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, testing::StartsWith("accredit: A:"));
    EXPECT_THAT(outcome.err, HasSubstr(row.Text(2)));
    EXPECT_EQ(fakes::ReadFile("R"), "before");
}

TEST(Program, AReportThatCannotBeWrittenIsAFailure) {
    const fakes::Files files("a\n1\n2\n", "");
    std::ofstream full("/dev/full");
    std::ostringstream err;
    EXPECT_EQ(fakes::CommandLine("check A A").Run(full, err), 2);
    EXPECT_THAT(err.str(), HasSubstr("could not be written"));
}

}  // namespace
