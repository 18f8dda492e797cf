#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
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

TEST(VarSummary, FoldsValuesAsAPassDoes) {
    const double inf = std::numeric_limits<double>::infinity();
    const Numbers odd = {MCMV::Missing(), MCMV::Missing(), -0.0, 0.0,  5e-324,
                         1e308,           -1e308,          inf,  -inf, std::nan("")};
    const std::string names = "a b c d e ";
    std::mt19937 random(5);
    std::uniform_real_distribution<double> uniform(-1.0, 3.0);
    for (int table = 0; table < 500; ++table) {
        // Up to NaN in every third table, up to the tame ones in the others.
        const std::size_t kinds = table % 3 == 0 ? odd.size() : 5;
        const std::size_t width = random() % 5 + 1;
        std::vector<Numbers> rows(random() % 12, Numbers(width));
        std::vector<VarSummary> expected(width);
        for (Numbers& row : rows) {
            for (std::size_t i = 0; i < width; ++i) {
                const std::size_t kind = random() % (2 * kinds);
                row[i] = kind < kinds ? odd[kind] : uniform(random);
                expected[i].AddValue(row[i]);
            }
        }
        const MADistStats stats = fakes::Summary(List(names.substr(0, 2 * width)), rows);
        for (unsigned int slot = 0; slot < width; ++slot) {
            VarSummary& alone = expected[slot];
            alone.Finish();
            VarSummary inPass;
            stats.GetMinMax(slot, inPass.min, inPass.max);
            stats.GetMeanStdDev(slot, inPass.mean, inPass.stdDev);
            EXPECT_EQ(stats.GetNumberOfCases(slot), alone.count);
            const Numbers& bins = stats.GetFrequencies(slot);
            EXPECT_EQ(std::accumulate(bins.begin(), bins.end(), 0.0),
                      bins.empty() ? 0.0 : static_cast<double>(alone.count));
            EXPECT_TRUE(Same(inPass.min, alone.min) && Same(inPass.max, alone.max)) << table;
            EXPECT_TRUE(Same(inPass.mean, alone.mean)) << table;
            EXPECT_TRUE(Same(inPass.stdDev, alone.stdDev)) << table;
        }
    }
}

}  // namespace
