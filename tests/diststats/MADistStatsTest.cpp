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

TABLE_TEST(Display, ListsEveryVariable, 3) {
    std::ostringstream out;
    MADistStats().Display("Empty", out);
    const MADistStats handle(new MADistStatsImp(fakes::Loaded(row.Text(0), row.Text(1))));
    handle.Display("Training", out);
    EXPECT_EQ(out.str(), "\n\nMADistStats: Training\n" + row.Text(2));
    out << std::fixed << std::setprecision(1) << std::hex;
    handle.Display("", out);
    EXPECT_EQ(out.precision(), 1);
    EXPECT_EQ(out.flags(), std::ios::fixed | std::ios::hex | std::ios::skipws);
}

}  // namespace
