#include <gtest/gtest.h>

#include <string>

#include "fakes/Summaries.h"

namespace {

// Whether the loading operation that a row describes accepts what it is given. Bin statistics are
// "slot; frequencies; cut points", or "slot; frequencies" of a categorical variable.
bool Load(MADistStatsImp& stats, const fakes::Row& row) {
    if (row.Text(0) == "SetAllStats") return stats.SetAllStats(fakes::UniStats(row.Text(1)));
    const auto lists = row.Lists(1);
    const auto slot = static_cast<unsigned int>(lists[0][0]);
    if (row.Text(0) == "SetSummStats") {
        const auto count = static_cast<unsigned long>(lists[1][0]);
        return stats.SetSummStats(slot, count, lists[2][0], lists[2][1], lists[2][2], lists[2][3]);
    }
    return lists.size() == 2 ? stats.SetFreqs(slot, lists[1])
                             : stats.SetFreqs(slot, lists[1], lists[2]);
}

TEST(Loading, ReplacesTheSlotOrNothing) {
    const auto list = fakes::List("(id) x c:r,g,b");
    for (const fakes::Row& row : fakes::Rows(4)) {
        MADistStatsImp stats(list, nullptr);
        ASSERT_TRUE(stats.SetFreqs(0, {1, 2}, {5}) && stats.SetSummStats(0, 3, 4, 6, 5, 1) &&
                    stats.SetFreqs(1, {4, 0.5, 0}) && stats.SetSummStats(1, 7, 1, 2, 3, 4));
        const std::string before = fakes::Contents(stats);
        EXPECT_EQ(Load(stats, row), row.Text(2) == "taken") << row.Label();
        EXPECT_EQ(fakes::Contents(stats), row.Text(3).empty() ? before : row.Text(3))
            << row.Label();
    }
}

}  // namespace
