#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "accredit/diststats/MAProblems.h"
#include "fakes/Summaries.h"

namespace {

using fakes::Column;
using fakes::List;
using fakes::Numbers;
using fakes::Query;
using fakes::RecordSource;

long CodeOfPass(RecordSource& source, const std::string& list = "x",
                MCQueryCancel* query = nullptr) {
    return fakes::CodeOf([&] { const MADistStatsImp stats(List(list), source, {}, query); });
}

TABLE_TEST(DataPass, SummarisesOrRefuses, 5) {
    RecordSource source(row.Lists(1));
    std::string got;
    const long code = fakes::CodeOf([&] {
        got = fakes::Contents(MADistStatsImp(List(row.Text(0)), source, row.Lists(2), nullptr));
    });
    const int bad = MAFindBadCutPoints(List(row.Text(0)), row.Lists(2));
    EXPECT_EQ(code == 180003, bad != MACutPointsAreGood);
    EXPECT_EQ(code == 0        ? got
              : code == 180003 ? "180003 at " + std::to_string(bad)
                               : std::to_string(code),
              row.Text(3));
    EXPECT_EQ(std::to_string(source.fetches) + ' ' + std::to_string(source.rewinds), row.Text(4));
}

// A source that shortens the list while it is read: to so many variables, at this question for
// more.
class Shortening : public RecordSource {
public:
    Shortening(int question, const std::string& rest, const std::vector<Numbers>& rows)
        : RecordSource(rows), mQuestion(question), mRest(rest) {}
    bool HasMoreRecords() override {
        if (--mQuestion == 0) list = List(mRest);
        return RecordSource::HasMoreRecords();
    }
    MCMTD_NAMESPACE::MCVarList list = List("x y");

private:
    int mQuestion;
    std::string mRest;
};

TABLE_TEST(DataPass, AsksTheListForItsSizeAtEveryRecord, 4) {
    Shortening source(static_cast<int>(row.Number(0)), row.Text(1), row.Lists(2));
    EXPECT_EQ(fakes::CodeOf([&] {
                  MADistStatsImp(source.list, source, {{}, {}}, nullptr);
              }),
              row.Number(3));
}

TABLE_TEST(DataPass, PutsAValueIntoTheBinThatALinearSearchFinds, 3) {
    EXPECT_EQ(fakes::Summary(List("x"), row.Lists(1), {row.Numbers(0)}).GetFrequencies(0),
              row.Numbers(2));
}

TEST(DataPass, FailsAtEveryRecordWithTheSourcesReason) {
    // 4 fetches of the first pass and 4 of the second.
    for (std::size_t fetch = 1; fetch <= 8; ++fetch) {
        for (const auto& [state, code] :
             {std::pair(1, 180004L), std::pair(2, 1L), std::pair(0, 180004L)}) {
            RecordSource source(Column({1, 2, 3, 4}));
            source.FailAt(fetch, state);
            EXPECT_EQ(CodeOfPass(source), code);
            EXPECT_EQ(source.fetches, fetch) << "nothing is read after the failure";
        }
    }
    RecordSource noRewind(Column({1, 2, 3, 4}));
    noRewind.FailRewind(3);
    EXPECT_EQ(CodeOfPass(noRewind), 180004);
    EXPECT_EQ(noRewind.fetches, 4U);
}

TEST(DataPass, PollsTheQueryBeforeEveryTwentiethRecordOfEachPass) {
    Numbers values(50);
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<double>(i);
    int poll = 0;
    for (const std::size_t fetches : {100U, 0U, 20U, 40U, 50U, 70U, 90U}) {
        Query query(poll);
        RecordSource source(Column(values));
        EXPECT_EQ(CodeOfPass(source, "x", &query), poll == 0 ? 0 : 1);
        EXPECT_EQ(source.fetches, fetches) << "stopped at poll " << poll;
        EXPECT_EQ(query.polls, poll == 0 ? 6 : poll);
        ++poll;
    }
}

bool Same(double left, double right) {
    return std::isnan(left) ? std::isnan(right) : std::memcmp(&left, &right, sizeof left) == 0;
}

// What a pass is to find of one variable, by one value after the other.
struct Literal {
    explicit Literal(const Numbers& values, const Numbers& cutPoints = {})
        : bins(cutPoints.empty() ? 0 : cutPoints.size() + 1) {
        for (const double x : values) {
            summary.AddValue(x);
            if (MCMV::IsMissing(x) || bins.empty()) continue;
            std::size_t bin = 0;
            while (bin < cutPoints.size() && cutPoints[bin] < x) ++bin;
            ++bins[bin];
        }
        summary.Finish();
    }

    VarSummary summary;
    Numbers bins;
};

void ExpectSame(const MADistStats& stats, unsigned int slot, const Numbers& values) {
    const Numbers& cutPoints = stats.GetCutPoints(slot);
    // Cut points that begin with NaN are searched in another way.
    const bool hasBins = cutPoints.empty() || !std::isnan(cutPoints[0]);
    const Literal expected(values, hasBins ? cutPoints : Numbers());
    VarSummary inPass;
    stats.GetMinMax(slot, inPass.min, inPass.max);
    stats.GetMeanStdDev(slot, inPass.mean, inPass.stdDev);
    EXPECT_EQ(stats.GetNumberOfCases(slot), expected.summary.count);
    EXPECT_TRUE(Same(inPass.min, expected.summary.min) && Same(inPass.max, expected.summary.max));
    EXPECT_TRUE(Same(inPass.mean, expected.summary.mean));
    EXPECT_TRUE(Same(inPass.stdDev, expected.summary.stdDev));
    if (!hasBins) return;
    EXPECT_EQ(stats.GetFrequencies(slot), expected.bins);
}

// Kinds of columns, by the values that may come.
std::vector<Numbers> KindsOfColumns() {
    const double inf = std::numeric_limits<double>::infinity();
    const double missing = MCMV::Missing();
    return {
        {},                          // none but random ones
        {missing},                   // a part is missing
        {0.0, 1.0, 2.0},             // the mean is met exactly
        {0.0, -0.0, missing},        // the first zero stays minimum and maximum
        {5e-324, 1e-310, -3e-300},   // quotients below the normal numbers
        {1e308, -1e308, 1e300},      // differences and squares overflow
        {inf, 1.0},                  // the mean becomes infinite, then a NaN
        {std::nan(""), -inf, -0.0},  // NaN stays the minimum if it comes first
    };
}

TEST(DataPass, GivesTheBitsOfOneValueAfterTheOther) {
    const std::vector<Numbers> kinds = KindsOfColumns();
    std::mt19937 random(5);
    std::uniform_real_distribution<double> uniform(-1.0, 3.0);
    for (int table = 0; table < 400; ++table) {
        const std::size_t width = random() % 20 + 1;
        std::vector<Numbers> columns(width);
        std::vector<Numbers> records(random() % 4 == 0 ? random() % 4 : random() % 300);
        std::string names;
        for (std::size_t i = 0; i < width; ++i) {
            names += (i > 0 ? " v" : "v") + std::to_string(i);
            // Odd values begin somewhere, so that blocks before are folded in another way.
            const Numbers& odd = kinds[random() % 4 == 0 ? random() % kinds.size() : 0];
            const std::size_t from = random() % (records.size() + 1);
            const bool onlyOdd = random() % 3 == 0;
            for (std::size_t r = 0; r < records.size(); ++r) {
                const bool isOdd = !odd.empty() && r >= from && (onlyOdd || random() % 4 == 0);
                columns[i].push_back(isOdd ? odd[random() % odd.size()] : uniform(random));
                records[r].push_back(columns[i].back());
            }
        }
        std::vector<Numbers> cutPoints(table % 2 == 0 ? width : 0);
        for (Numbers& list : cutPoints) {
            for (std::size_t size = random() % 13; list.size() < size;) {
                list.push_back(list.empty() ? -1.0 : list.back() + 0.25);
            }
            if (!list.empty() && random() % 4 == 0) list[0] = -HUGE_VAL;
        }
        const MADistStats stats = fakes::Summary(List(names), records, cutPoints);
        for (unsigned int slot = 0; slot < width; ++slot) {
            SCOPED_TRACE(std::to_string(table) + ' ' + std::to_string(slot));
            ExpectSame(stats, slot, columns[slot]);
        }
    }
}

TEST(DataPass, CountsCategoriesByTheirTruncatedCodes) {
    std::mt19937 random(6);
    for (int table = 0; table < 60; ++table) {
        // Some codes are beyond those that are counted in several copies.
        const double bound = table % 2 == 0 ? 12.0 : 100.0;
        std::uniform_real_distribution<double> uniform(-2.0, bound);
        std::vector<Numbers> records(random() % 300);
        std::vector<Numbers> expected(11);
        std::string names;
        for (int i = 0; i < 11; ++i) names += " c" + std::to_string(i) + ":a";
        for (Numbers& record : records) {
            for (Numbers& counts : expected) {
                const double x = random() % 9 == 0 ? MCMV::Missing() : uniform(random);
                record.push_back(x);
                if (!(x > -1.0)) continue;
                const auto code = static_cast<std::size_t>(std::max(x, 0.0));
                if (code >= counts.size()) counts.resize(code + 1);
                ++counts[code];
            }
        }
        const MADistStats stats = fakes::Summary(List(names.substr(1)), records);
        for (unsigned int slot = 0; slot < 11; ++slot) {
            EXPECT_EQ(stats.GetFrequencies(slot), expected[slot]) << table;
        }
    }
}

}  // namespace
