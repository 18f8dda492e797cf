#include "accredit/accreditation/MAComparison.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "fakes/Summaries.h"

namespace {

using fakes::List;
using fakes::Numbers;
using fakes::ToText;

void ExpectNear(const Numbers& got, const Numbers& wanted) {
    ASSERT_EQ(got.size(), wanted.size());
    for (std::size_t i = 0; i < got.size(); ++i) {
        EXPECT_NEAR(got[i], wanted[i], 1e-13 * std::fmax(1.0, wanted[i])) << i;
    }
}

TABLE_TEST(Comparison, TestsTwoSamples, 5) {
    const Numbers reference = row.Numbers(0);
    const Numbers observed = row.Numbers(1);
    Numbers figures;
    if (const auto test = MATestTwoSamples(reference, observed)) {
        figures = {1.0 * test->cells,      1.0 * test->pooledCells,
                   test->degreesOfFreedom, test->statistic,
                   test->pValue,           test->stabilityIndex};
    }
    ExpectNear(figures, row.Numbers(2));
    const auto moved = MAShareMoved(reference, observed);
    ExpectNear(moved ? Numbers{*moved} : Numbers(), row.Numbers(3));
    EXPECT_LE(moved.value_or(0.0), 1.0);
    EXPECT_EQ(MAMostChangedCell(reference, observed), row.Number(4));
}

TABLE_TEST(Comparison, AdjustsPValues, 2) {
    ExpectNear(MAAdjustPValues(row.Numbers(0)), row.Numbers(1));
}

TABLE_TEST(Comparison, ExpectsPValues, 2) {
    const Numbers n = fakes::Exactly(4, row.Numbers(0));
    ExpectNear({MAExpectedPValue(static_cast<std::size_t>(n[0]), static_cast<std::size_t>(n[1]),
                                 n[2], n[3])},
               row.Numbers(1));
}

TABLE_TEST(Comparison, PairsCells, 7) {
    const auto reference = fakes::Summary(List(row.Text(0)), row.Lists(1), row.Lists(2));
    const Numbers cutPoints = MACutPointsFor(reference, 0);
    const auto observed =
        fakes::Summary(List(row.Text(3)), row.Lists(4),
                       row.Text(5).empty() ? std::vector<Numbers>{cutPoints} : row.Lists(5));
    std::string text = ToText(cutPoints);
    const auto cells = MACellsOf(reference, 0, observed, 0);
    if (cells) {
        text += "; " + ToText(cells->reference) + "; " + ToText(cells->observed) + "; " +
                ToText({cells->referenceCodes.begin(), cells->referenceCodes.end()}) + "; " +
                ToText({cells->newCodes.begin(), cells->newCodes.end()});
    }
    EXPECT_EQ(cells ? fakes::Trimmed(text) : text + "; none", row.Text(6));
}

MADistStats Stored(const std::string& list, const std::string& statistics) {
    return {new MADistStatsImp(fakes::Loaded(list, statistics))};
}

std::vector<MAUncountedData> Uncounted(const std::vector<Numbers>& lists) {
    std::vector<MAUncountedData> all(lists.size());
    for (std::size_t i = 0; i < lists.size(); ++i) {
        if (fakes::Exactly(2, lists[i])[0] >= 0) all[i].missing = std::lround(lists[i][0]);
        if (lists[i][1] >= 0) all[i].unreadable = std::lround(lists[i][1]);
    }
    return all;
}

// With 6 digits; a dash for what is not there.
std::string Said(const std::optional<double>& number) {
    std::ostringstream text;
    if (number) text << *number;
    return number ? ' ' + text.str() : " -";
}

std::string Said(MAVerdict verdict) {
    return std::vector{" unchanged", " minor", " moderate", " untested", " major"}.at(
        static_cast<std::size_t>(verdict));
}

std::string Said(const MAChange& change) {
    return ';' + Said(change.verdict) + Said(change.adjustedPValue) + Said(change.shareMoved);
}

TABLE_TEST(Comparison, ComparesVariables, 8) {
    const std::vector reasons = {"tested",           "not matched",    "no bins",
                                 "other cut points", "no frequencies", "too few cases"};
    const auto comparisons =
        MACompareVariables(Stored(row.Text(0), row.Text(1)), Stored(row.Text(3), row.Text(4)),
                           Uncounted(row.Lists(2)), Uncounted(row.Lists(5)), row.Number(6));
    std::string text;
    for (const MAVariableComparison& each : comparisons) {
        text += Said(each.verdict) + ", " + reasons.at(static_cast<std::size_t>(each.untested)) +
                Said(each.values) + Said(each.missing) + Said(each.missing.referenceShare) +
                Said(each.missing.newShare) + Said(each.unreadable) +
                Said(each.unreadable.referenceShare) + Said(each.unreadable.newShare) + "; " +
                std::to_string(each.mostChanged) + Said(each.meanShift) +
                Said(each.deviationRatio) + Said(each.expectedPValue);
        if (const auto crowded = each.crowdedBin) {
            text += "; " + std::to_string(crowded->bin) + Said(crowded->share);
        }
        text += " /";
    }
    EXPECT_EQ(fakes::Trimmed(text + Said(MAExpectedAccreditation(comparisons, {}))), row.Text(7));
}

TEST(Comparison, ExpectsTheMeanAccreditationOfDataFromOneDistribution) {
    std::mt19937 engine(20);
    // So many cases in as many equally likely cells, and none in the rest.
    const auto draw = [&](int cases, std::size_t likely, std::size_t cells) {
        Numbers counts(cells, 0.0);
        for (int i = 0; i < cases; ++i) counts[engine() % likely] += 1.0;
        return "; " + std::to_string(cases) + "; " + ToText(counts);
    };
    const auto sample = [&](int n) {
        std::string text = 'c' + draw(n, 5, 5);
        text += "/d" + draw(n, 3, 6);
        return Stored("c:1,2,3,4,5 d:1,2,3,4,5,6 e:1,2", text + "/e" + draw(n, 1, 2));
    };
    constexpr int kTimes = 4000;
    const Numbers weights = {2, 1, 0.5};
    double mean = 0.0;
    for (int i = 0; i < kTimes; ++i) {
        const MADistStats reference = sample(2000);
        double accreditation = -1.0;
        ASSERT_TRUE(MAAccreditation(reference, sample(1000), weights, accreditation).IsOK());
        mean += accreditation / kTimes;
    }
    const auto comparisons = MACompareVariables(sample(2000), sample(1000), {}, {}, 0.01);
    // Three standard errors.
    EXPECT_NEAR(MAExpectedAccreditation(comparisons, weights), mean, 0.009);
    EXPECT_EQ(MAExpectedAccreditation(comparisons, {0, 0, 0}), -1.0);
    EXPECT_EQ(MAExpectedAccreditation(comparisons, {1}), -1.0);
    EXPECT_EQ(MAExpectedAccreditation({}, {}), -1.0);
}

}  // namespace
