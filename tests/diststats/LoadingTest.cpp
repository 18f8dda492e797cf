#include <gtest/gtest.h>

#include <string>

#include "accredit/diststats/MAUniStats.h"
#include "fakes/Summaries.h"

namespace {

// Whether the loading operation that a row describes accepts what it is given.
bool Load(MADistStatsImp& stats, const fakes::Row& row) {
    const std::string operation = row.Text(0);
    if (operation == "SetAllStats") return stats.SetAllStats(fakes::UniStats(row.Text(1)));
    const std::vector<fakes::Numbers> lists = row.Lists(1);
    const auto slot = static_cast<unsigned int>(fakes::Exactly(1, lists.at(0))[0]);
    if (operation == "SetSummStats" && lists.size() == 3) {
        const auto count = static_cast<unsigned long>(fakes::Exactly(1, lists[1])[0]);
        const fakes::Numbers& four = fakes::Exactly(4, lists[2]);
        return stats.SetSummStats(slot, count, four[0], four[1], four[2], four[3]);
    }
    const bool bins = lists.size() == 3;
    if (operation != "SetFreqs" || (!bins && lists.size() != 2)) {
        fakes::Refuse(operation, "is no operation on this many lists");
    }
    return bins ? stats.SetFreqs(slot, lists[1], lists[2]) : stats.SetFreqs(slot, lists[1]);
}

TABLE_TEST(Loading, ReplacesTheSlotOrNothing, 4) {
    const auto list = fakes::List("(id) x c:r,g,b");
    MADistStatsImp stats(list, nullptr);
    ASSERT_TRUE(stats.SetFreqs(0, {1, 2}, {5}) && stats.SetSummStats(0, 3, 4, 6, 5, 1) &&
                stats.SetFreqs(1, {4, 0.5, 0}) && stats.SetSummStats(1, 7, 1, 2, 3, 4));
    const std::string before = fakes::Contents(stats);
    EXPECT_EQ(Load(stats, row), row.Is(2, "taken", "refused"));
    EXPECT_EQ(fakes::Contents(stats), row.Text(3).empty() ? before : row.Text(3));

    MADistStatsImp again(list, nullptr);
    for (unsigned int slot = 0; slot < 2; ++slot) {
        EXPECT_TRUE(again.SetAllStats(MAUniStatsOf(stats, slot)));
    }
    EXPECT_EQ(fakes::Contents(again), fakes::Contents(stats));
}

}  // namespace
