#include "accredit/diststats/MACutPoints.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "accredit/diststats/MAProblems.h"
#include "fakes/Summaries.h"

namespace {

using fakes::Contents;
using fakes::List;
using fakes::Numbers;

// The lists that the moments of a summary give, one a slot.
std::vector<Numbers> FromMoments(const MADistStats& stats) {
    std::vector<Numbers> lists(stats.GetVarCount());
    for (unsigned int slot = 0; slot < lists.size(); ++slot) {
        Numbers moments(2);
        stats.GetMeanStdDev(slot, moments[0], moments[1]);
        lists[slot] = MAComputeCutPoints(moments[0], moments[1]);
    }
    return lists;
}

// Values that leave a variable without cut points, or with some that cannot be given, are as likely
// as those that vary.
TEST(CutPoints, OfTheMomentsGiveInOnePassWhatTwoGive) {
    const std::vector<Numbers> pools = {
        {fakes::kMissing},  {7, fakes::kMissing}, {-0.0, 0.0}, {1e16, 1e16 + 2},
        {1e308, -1e308, 1}, {INFINITY, 1},        {5e-324, 0}, {0, 1, 2, 3, 50, fakes::kMissing}};
    std::mt19937 random(13);
    int given = 0;
    int refused = 0;
    for (int trial = 0; trial < 2000; ++trial) {
        std::vector<Numbers> rows(random() % 12, Numbers(3));
        for (std::size_t i = 0; i < 2; ++i) {
            const Numbers& pool = pools[random() % pools.size()];
            for (Numbers& row : rows) row[i] = pool[random() % pool.size()];
        }
        for (Numbers& row : rows) row[2] = static_cast<double>(random() % 3);
        const auto list = List("x y c:a,b,c");
        const MADistStats computed = fakes::Summary(list, rows);
        const std::vector<Numbers> cutPoints = FromMoments(computed);
        for (unsigned int slot = 0; slot < cutPoints.size(); ++slot) {
            EXPECT_EQ(fakes::ToText(cutPoints[slot]), fakes::ToText(computed.GetCutPoints(slot)));
        }
        if (MAFindBadCutPoints(list, cutPoints) != MACutPointsAreGood) {
            ++refused;
            continue;
        }
        ++given;
        EXPECT_EQ(Contents(fakes::Summary(list, rows, cutPoints)), Contents(computed)) << trial;
    }
    EXPECT_GT(given, 500);
    EXPECT_GT(refused, 100);
}

}  // namespace
