#include "accredit/diststats/MADistStats.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>
#include <string>

#include "accredit/diststats/MAUniStats.h"
#include "fakes/Summaries.h"

namespace {

using fakes::Column;
using fakes::Contents;
using fakes::List;
using fakes::Summary;

// What every accessor answers for a slot, and what the two that overwrite make of 1.5 and 2.5.
std::string Answers(const MADistStats& stats, unsigned int slot) {
    double first = 1.5;
    double second = 2.5;
    stats.GetMinMax(slot, first, second);
    double third = 1.5;
    double fourth = 2.5;
    stats.GetMeanStdDev(slot, third, fourth);
    std::ostringstream out;
    out << stats.GetVarListIndex(slot) << ' ' << stats.IsCategorical(slot) << ' '
        << stats.GetFrequencies(slot).size() << ' ' << stats.GetCutPoints(slot).size() << ' '
        << stats.GetNumberOfCases(slot) << ' ' << fakes::ToText({first, second, third, fourth});
    return out.str();
}

TEST(MADistStats, AnEmptyHandleAndABadSlotHaveFixedAnswers) {
    EXPECT_EQ(MADistStats().GetVarList().Size(), 0U);
    EXPECT_EQ(MADistStats(nullptr).GetVarCount(), 0U);
    EXPECT_EQ(Answers(MADistStats(), 0), "-1 1 0 0 0 1.5 2.5 1.5 2.5");
    const MADistStats stats = Summary(List("(id) x"), {{0, 1}, {0, 20}}, {{10}});
    EXPECT_EQ(stats.GetVarCount(), 1U);
    EXPECT_EQ(Answers(stats, 0), "1 0 2 1 2 1 20 10.5 13.435028842544403");
    for (const unsigned int slot : {1U, 4294967295U}) {
        EXPECT_EQ(Answers(stats, slot), "-1 1 0 0 0 M M M M");
    }
    EXPECT_EQ(MAUniStatsOf(stats, 0).GetVarName(), "x");
    EXPECT_EQ(MAUniStatsOf(stats, 1).GetVarName() + MAUniStatsOf(MADistStats(), 0).GetVarName(),
              "");
    EXPECT_EQ(Contents(MADistStatsImp(List("x c:a"), nullptr)), "0; M M 0 0; ; / 0; M M 0 0; ;")
        << "a shell";
}

TEST(MADistStats, CopiesStandAloneAndEmptinessIsCopied) {
    MADistStats source = Summary(List("c:red,blue"), Column({0, 1}));
    const std::string contents = Contents(source);
    const MADistStats copy(source);
    MADistStats assigned;
    assigned = source;
    source = Summary(List("x"), Column({1, 2, 3}), {{10}});
    for (const MADistStats* stats : {&copy, &static_cast<const MADistStats&>(assigned)}) {
        EXPECT_EQ(Contents(*stats), contents);
        EXPECT_EQ(stats->GetVarList().GetEncoderAt(0)->DecodeString(1), "blue");
    }
    EXPECT_EQ(Contents(source), "3; 1 3 2 1; 10; 3 0");

    const std::vector<double>* held = &source.GetFrequencies(0);
    const MADistStats& self = source;
    source = self;
    EXPECT_EQ(&source.GetFrequencies(0), held) << "assignment to itself keeps the object";
    source = MADistStats();
    EXPECT_EQ(Contents(MADistStats(source)), "");

    MADistStatsImp shell(List("(id) x"), nullptr);
    shell = MADistStatsImp(List("a (id) c/2"), nullptr);
    EXPECT_EQ(shell.GetVarListIndex(1), 2);
    EXPECT_TRUE(shell.IsCategorical(1));
    EXPECT_EQ(fakes::CodeOf([] { const MADistStatsImp none(List("(id)"), nullptr); }), 180002);
}

TEST(Display, ListsEveryVariable) {
    MADistStatsImp stats(List("age one never-filled colour:red,blue none"), nullptr);
    stats.SetSummStats(0, 1234567, 18, 63, 40, 10);
    stats.SetFreqs(0, {1, 6, 1234567, 13, 6, 0.5}, {20, 30, 40, 50, 60});
    stats.SetSummStats(1, 1, 7, 7, 7, 0);
    stats.SetSummStats(3, 3, 0, 0, 0, 0);
    stats.SetFreqs(3, {1, 2});
    stats.SetSummStats(4, 0, 0, 0, 0, 0);

    std::ostringstream out;
    const MADistStats handle(new MADistStatsImp(stats));
    MADistStats().Display("Empty", out);
    handle.Display("Training", out);
    EXPECT_EQ(out.str(),
              "\n\nMADistStats: Training\n"
              "\nVariable name: age\nCase count: 1234567\nCut points: 20, 30, 40, 50, 60\n"
              "Frequencies: 1, 6, 1.23457e+06, 13, 6, 0.5\n"
              "Summary stats (min, max, mean, std. dev):\n18, 63, 40, 10\n"
              "\nVariable name: one\nCase count: 1\nCut points: \nFrequencies: \n"
              "Summary stats (min, max, mean, std. dev):\n7, 7, 7, \n"
              "\nVariable name: never-filled\nCase count: 0\nCut points: \nFrequencies: \n"
              "Summary stats (min, max, mean, std. dev):\n, , 0, 0\n"
              "\nVariable name: colour\nCase count: 3\nFrequencies: 1, 2\n"
              "\nVariable name: none\nCase count: 0\nCut points: \nFrequencies: \n"
              "Summary stats (min, max, mean, std. dev):\n, , , \n");
    out << std::fixed << std::setprecision(1);
    stats.Display("", out);
    EXPECT_NE(out.str().find("Cut points: 20.0, 30.0"), std::string::npos) << "the stream's state";
    EXPECT_EQ(out.precision(), 1);
}

}  // namespace
