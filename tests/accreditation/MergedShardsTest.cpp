// Shards of records that are summarised apart and merged, against one pass over all of them.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "accredit/accreditation/MAComparison.h"
#include "accredit/diststats/MAMerge.h"
#include "accredit/diststats/MASummaryBuilder.h"
#include "fakes/Summaries.h"

namespace {

using fakes::Numbers;
using MCMTD_NAMESPACE::MCStringEncoder;
using MCMTD_NAMESPACE::MCVariable;

constexpr std::size_t kNumbers = 4;  // Variables that are numbers come first,
constexpr std::size_t kNamed = 6;    // then categories with names, and one without.
constexpr std::size_t kVariables = 7;

// Summarises records in which categories are numbers. All but the last get codes in the order in
// which they come up; the last is its code, and has no encoder.
struct Summariser {
    explicit Summariser(const std::vector<Numbers>& cutPoints) {
        for (std::size_t i = 0; i < kVariables; ++i) {
            const bool isNumber = i < kNumbers;
            const bool isNamed = !isNumber && i < kNamed;
            if (isNamed) encoders.push_back(std::make_shared<MCStringEncoder>());
            list.AddShared(std::make_shared<MCVariable>("v" + std::to_string(i), isNumber ? 1 : 2),
                           isNamed ? encoders.back() : nullptr);
        }
        builder = std::make_unique<MASummaryBuilder>(list, cutPoints);
    }

    void Add(Numbers record) {
        for (std::size_t i = kNumbers; i < kNamed; ++i) {
            if (MCMV::IsMissing(record[i])) continue;
            record[i] = encoders[i - kNumbers]->AddCategory(std::to_string(record[i]));
        }
        ASSERT_TRUE(builder->Add(record).IsOK());
    }

    std::vector<std::shared_ptr<MCStringEncoder>> encoders;
    MCMTD_NAMESPACE::MCVarList list;
    std::unique_ptr<MASummaryBuilder> builder;
};

MADistStats SummaryOf(const std::vector<Numbers>& records, std::size_t from, std::size_t to,
                      const std::vector<Numbers>& cutPoints) {
    Summariser summariser(cutPoints);
    for (std::size_t i = from; i < to; ++i) summariser.Add(records[i]);
    return summariser.builder->GetDistStats();
}

// Numbers around a centre that lies far from zero now and then, one that may be constant, one with
// hardly any case, and categories of which new ones come up again and again.
std::vector<Numbers> Draw(std::mt19937& random, std::size_t count, double centre, double spread) {
    const auto category = [&random](std::size_t below) {
        return static_cast<double>(random() % below);
    };
    std::normal_distribution<double> normal(centre, spread);
    std::vector<Numbers> records;
    for (std::size_t i = 0; i < count; ++i) {
        records.push_back({normal(random), random() % 8 == 0 ? fakes::kMissing : normal(random),
                           spread == 1.0 ? centre : std::round(normal(random)),
                           random() % 40 == 0 ? normal(random) : fakes::kMissing, category(5),
                           category(std::min<std::size_t>(i + 1, 30)), category(3)});
        if (random() % 10 == 0) records.back()[4] = fakes::kMissing;
    }
    return records;
}

// The mean and the deviation, against what longer numbers give in two passes.
void ExpectNear(const MADistStats& merged, unsigned int slot, const std::vector<Numbers>& records) {
    long double sum = 0.0L;
    long double n = 0.0L;
    double largest = 0.0;
    for (const Numbers& record : records) {
        if (MCMV::IsMissing(record[slot])) continue;
        sum += record[slot];
        n += 1.0L;
        largest = std::max(largest, std::fabs(record[slot]));
    }
    if (n < 2.0L) return;
    long double squares = 0.0L;
    for (const Numbers& record : records) {
        if (MCMV::IsMissing(record[slot])) continue;
        squares += (record[slot] - sum / n) * (record[slot] - sum / n);
    }
    const auto deviation = static_cast<double>(std::sqrt(squares / (n - 1.0L)));
    Numbers moments(2);
    merged.GetMeanStdDev(slot, moments[0], moments[1]);
    EXPECT_NEAR(moments[0], static_cast<double>(sum / n), 1e-14 * largest);
    EXPECT_NEAR(moments[1], deviation, 1e-15 * largest + 1e-14 * deviation);
}

std::string Said(const MAChange& change) {
    const MATwoSampleTest test = change.test.value_or(MATwoSampleTest());
    return fakes::ToText({static_cast<double>(change.verdict), change.test ? 1.0 : 0.0,
                          test.statistic, test.degreesOfFreedom, test.pValue, 1.0 * test.cells,
                          1.0 * test.pooledCells, test.stabilityIndex,
                          change.adjustedPValue.value_or(-1), change.shareMoved.value_or(-1)}) +
           "; ";
}

// All that a comparison gives but the shift of the mean and the ratio of the deviations.
std::string Verdicts(const MADistStats& reference, const MADistStats& summary) {
    std::string all;
    const auto comparisons = MACompareVariables(reference, summary, {}, {}, 0.01);
    for (const MAVariableComparison& each : comparisons) {
        all += fakes::ToText({1.0 * each.result.newSlot, each.result.pValue, each.result.statistic,
                              each.result.degreesOfFreedom,
                              static_cast<double>(each.result.status.GetCode()),
                              each.expectedPValue.value_or(-1), 1.0 * each.mostChanged,
                              static_cast<double>(each.untested)}) +
               "; " + fakes::ToText(each.cells.reference) + "; " +
               fakes::ToText(each.cells.observed) + "; " +
               fakes::ToText({each.cells.newCodes.begin(), each.cells.newCodes.end()}) + "; " +
               Said(each.values) + Said(each.missing) + "\n";
    }
    for (const Numbers& weights : {Numbers(), Numbers{1, 0.5, 0, 2, 3, 0.25, 1}}) {
        double accreditation = -2.0;
        all += MAAccreditation(reference, summary, weights, accreditation).GetMessage();
        all += fakes::ToText({accreditation, MAExpectedAccreditation(comparisons, weights)});
    }
    return all;
}

TEST(MergedShards, GiveTheVerdictsOfOnePass) {
    std::mt19937 random(29);
    for (int trial = 0; trial < 200; ++trial) {
        const double centre = Numbers{0.0, 3.0, 1e6, -1e9}[random() % 4];
        const double spread = Numbers{1.0, 0.01, 2000.0}[random() % 3];
        const std::vector<Numbers> learned = Draw(random, 300, centre, spread);
        const MADistStats bins = fakes::Summary(fakes::List("v0 v1 v2 v3 v4/2 v5/2 v6/2"), learned);
        std::vector<Numbers> cutPoints;
        for (unsigned int slot = 0; slot < kVariables; ++slot) {
            cutPoints.push_back(bins.GetCutPoints(slot));
        }
        const MADistStats reference = SummaryOf(learned, 0, learned.size(), cutPoints);

        const std::size_t count = random() % 3 == 0 ? random() % 8 : 200 + random() % 200;
        const std::vector<Numbers> records =
            Draw(random, count, centre + (trial % 2 == 0 ? 0.0 : 0.2 * spread), spread);
        std::vector<std::size_t> edges = {0, count};
        for (std::size_t more = random() % 6; more > 0; --more) {
            edges.push_back(random() % (count + 1));
            // A shard of one record, or none.
            if (random() % 2 == 0) edges.push_back(std::min(edges.back() + random() % 2, count));
        }
        std::sort(edges.begin(), edges.end());
        MADistStats merged;
        for (std::size_t i = 1; i < edges.size(); ++i) {
            MAMerged next =
                MAMergeDistStats(merged, SummaryOf(records, edges[i - 1], edges[i], cutPoints));
            ASSERT_EQ(next.problem, MAMergeProblem::None);
            merged = next.stats;
        }

        const MADistStats whole = SummaryOf(records, 0, count, cutPoints);
        for (unsigned int slot = 0; slot < kVariables; ++slot) {
            SCOPED_TRACE("trial " + std::to_string(trial) + ", slot " + std::to_string(slot));
            EXPECT_EQ(merged.GetNumberOfCases(slot), whole.GetNumberOfCases(slot));
            EXPECT_EQ(merged.GetFrequencies(slot), whole.GetFrequencies(slot));
            Numbers ends(4);
            merged.GetMinMax(slot, ends[0], ends[1]);
            whole.GetMinMax(slot, ends[2], ends[3]);
            EXPECT_EQ(fakes::ToText({ends[0], ends[1]}), fakes::ToText({ends[2], ends[3]}));
            if (slot < kNumbers) ExpectNear(merged, slot, records);
            const auto& encoder = *merged.GetVarList().GetEncoderAt(static_cast<int>(slot));
            for (int code = 0; code < encoder.GetNumCategories(); ++code) {
                EXPECT_EQ(
                    encoder.DecodeString(code),
                    whole.GetVarList().GetEncoderAt(static_cast<int>(slot))->DecodeString(code));
            }
        }
        EXPECT_EQ(Verdicts(reference, merged), Verdicts(reference, whole)) << "trial " << trial;
    }
}

}  // namespace
