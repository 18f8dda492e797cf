#include "accredit/accreditation/MAAccreditor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "accredit/accreditation/MAComparison.h"
#include "accredit/accreditation/MAVariableResult.h"
#include "accredit/accreditation/internal/VariableTests.h"
#include "fakes/Summaries.h"

namespace {

using fakes::Column;
using fakes::List;
using fakes::Query;
using fakes::RecordSource;
using fakes::Summary;
using MCCommon::MCStatus;

// "180015 at 3": the code and the datum of a status, if it has one. No status has the flag.
std::string Told(const MCStatus& status) {
    EXPECT_FALSE(status.GetFlag());
    const std::string code = std::to_string(status.GetCode());
    return status.HasDiscreteDatum(0) ? code + " at " + std::to_string(status.GetDiscreteDatum(0))
                                      : code;
}

TABLE_TEST(Accreditation, PairsVariablesByNameAndNamesTheFirstFailure, 4) {
    std::vector<int> matches(9, 7);
    const MCStatus status =
        MAAccreditor::MatchVariables(List(row.Text(0)), List(row.Text(1)), matches);
    EXPECT_EQ(fakes::ToText({matches.begin(), matches.end()}), row.Text(2));
    EXPECT_EQ(Told(status), row.Text(3));
}

TEST(Accreditation, PairsLongListsInReverse) {
    constexpr int kCount = 100000;
    std::string words;
    std::string reversed;
    for (int i = 0; i < kCount; ++i) {
        words += 'v' + std::to_string(i) + ' ';
        reversed += 'v' + std::to_string(kCount - 1 - i) + ' ';
    }
    std::vector<int> matches;
    ASSERT_TRUE(MAAccreditor::MatchVariables(List(words), List(reversed), matches).IsOK());
    for (int i = 0; i < kCount; ++i) {
        ASSERT_EQ(matches.at(static_cast<std::size_t>(i)), kCount - 1 - i);
    }
}

TABLE_TEST(Accreditation, FitsFrequencies, 3) {
    const double p = row.Number(2);
    MAVariableResult result;
    EXPECT_NEAR(MADetail::ChiSquareFit(row.Numbers(0), row.Numbers(1), result), p,
                p > 0.0 && p < 1.0 ? 4e-15 : 0.0);
}

// The tests of all variables, and the number that the accreditor makes of them.
TABLE_TEST(Accreditation, ComparesSummaries, 7) {
    const MADistStats reference = row.Text(0).empty()
                                      ? MADistStats()
                                      : Summary(List(row.Text(0)), row.Lists(1), row.Lists(2));
    const auto list = List(row.Text(3));
    RecordSource source(row.Lists(4));
    MAAccreditor accreditor(list, source, nullptr);
    ASSERT_TRUE(accreditor.ComputeDistStats(row.Lists(5)).IsOK());

    const std::vector<std::string> expected = fakes::Split(row.Text(6), ';');
    const std::vector<MAVariableResult> results =
        MATestVariables(reference, accreditor.GetDistStats());
    ASSERT_EQ(results.size() + 1, expected.size());
    for (std::size_t i = 0; i < results.size(); ++i) {
        std::vector<std::string> want = fakes::Split(expected[i], ',');
        if (want.size() == 3) want.insert(want.end(), 2, "-1");
        ASSERT_EQ(want.size(), 5U);
        EXPECT_EQ(std::to_string(results[i].newSlot) + ',' + Told(results[i].status),
                  want[0] + ',' + want[1]);
        EXPECT_NEAR(results[i].pValue, fakes::ToNumber(want[2]), 4e-15);
        EXPECT_DOUBLE_EQ(results[i].statistic, fakes::ToNumber(want[3]));
        EXPECT_EQ(results[i].degreesOfFreedom, fakes::ToNumber(want[4]));
    }
    const std::vector<std::string> last = fakes::Split(expected.back(), ',');
    ASSERT_EQ(last.size(), 2U);
    EXPECT_EQ(Told(accreditor.ComputeAccreditation(reference, {})), last[0]);
    EXPECT_NEAR(accreditor.GetAccreditation(), fakes::ToNumber(last[1]), 4e-15);
    double same = 7.0;
    EXPECT_EQ(Told(MAAccreditation(results, {}, same)), last[0]);
    EXPECT_EQ(same, accreditor.GetAccreditation());
    same = 7.0;
    EXPECT_EQ(Told(MAAccreditation(reference, accreditor.GetDistStats(), {}, same)), last[0]);
    EXPECT_EQ(same, accreditor.GetAccreditation());
}

TABLE_TEST(Accreditation, WeighsTheMeanOfThePValues, 3) {
    // The p-values are 1, 0 and 1.
    const auto list = List("same other too");
    const MADistStats reference =
        Summary(list, {{1, 1, -1}, {2, 2, 1}, {1, 1, -2}, {2, 2, 2}}, {{1.5}, {9}, {0}});
    RecordSource source({{1, 10, -1}, {2, 1, 1}});
    MAAccreditor accreditor(list, source, nullptr);
    ASSERT_TRUE(accreditor.ComputeDistStats({{1.5}, {9}, {0}}).IsOK());
    MCStatus status;
    for (const fakes::Numbers& weights : row.Lists(0)) {
        status = accreditor.ComputeAccreditation(reference, weights);
    }
    EXPECT_EQ(Told(status), row.Text(1));
    EXPECT_DOUBLE_EQ(accreditor.GetAccreditation(), row.Number(2));
    double same = 7.0;
    const auto results = MATestVariables(reference, accreditor.GetDistStats());
    EXPECT_EQ(Told(MAAccreditation(results, row.Lists(0).back(), same)), row.Text(1));
    EXPECT_EQ(same, accreditor.GetAccreditation());
}

TEST(Accreditation, LooksAtSummariesThenMatchesThenWeightsThenVariables) {
    const auto list = List("same other");
    RecordSource source({{1, 10}, {2, 1}});
    MAAccreditor accreditor(list, source, nullptr);
    const MADistStats wider = Summary(List("same else"), {{1, 1}, {2, 2}});
    EXPECT_EQ(accreditor.GetAccreditation(), -1.0);
    EXPECT_EQ(accreditor.ComputeAccreditation(wider, {}).GetCode(), 180008);
    for (const MAVariableResult& result : MATestVariables(wider, accreditor.GetDistStats())) {
        EXPECT_EQ(result.status.GetCode(), 180008);
    }
    ASSERT_TRUE(accreditor.ComputeDistStats({{1.5}, {9}}).IsOK());
    EXPECT_EQ(Told(accreditor.ComputeAccreditation(wider, {-1})), "180015 at 1")
        << "a failed match hides bad weights";
    double none = 7.0;
    EXPECT_EQ(Told(MAAccreditation(MATestVariables(wider, accreditor.GetDistStats()), {-1}, none)),
              "180015 at 1");
    const MADistStats few = Summary(List("same"), {{1}}, {{1.5}});
    EXPECT_EQ(Told(MAAccreditation(MATestVariables(few, accreditor.GetDistStats()), {-1}, none)),
              "180021");
    EXPECT_EQ(Told(accreditor.ComputeAccreditation(few, {0})), "180019")
        << "a variable of weight 0 is tested all the same";
}

TEST(Accreditation, KeepsTheEarlierSummaryAndNumberWhenAPassFails) {
    RecordSource source(Column({1, 2}));
    EXPECT_EQ(fakes::CodeOf([&] { const MAAccreditor none(List("(x)"), source, nullptr); }),
              180002);
    const auto list = List("x");
    Query query(3);
    MAAccreditor accreditor(list, source, &query);
    ASSERT_TRUE(accreditor.ComputeDistStats({{1.5}}).IsOK());
    ASSERT_TRUE(accreditor.ComputeAccreditation(accreditor.GetDistStats(), {}).IsOK());

    source.Rewind();
    EXPECT_EQ(accreditor.ComputeDistStats({{2, 1}}).GetCode(), 180003);
    source.FailAt(source.fetches + 2, 1);
    EXPECT_EQ(accreditor.ComputeDistStats({}).GetCode(), 180004);
    source.FailAt(0, 0);
    EXPECT_EQ(accreditor.ComputeDistStats({}).GetCode(), 1);
    EXPECT_EQ(accreditor.GetDistStats().GetNumberOfCases(0), 2U);
    EXPECT_EQ(accreditor.GetAccreditation(), 1.0);
}

// An encoder that breaks its contract: it answers with codes that it does not have.
class LyingEncoder : public MCMTD_NAMESPACE::MCStringEncoder {
public:
    explicit LyingEncoder(double answer) : MCStringEncoder({"a", "b"}), mAnswer(answer) {}
    double EncodeString(const std::string& /*value*/) const override { return mAnswer; }

private:
    double mAnswer;
};

TEST(Accreditation, StaysInsideItsVectorsWhateverAnEncoderAnswers) {
    const MADistStats reference = Summary(List("c:a,b"), Column({0, 1}));
    for (const double answer : {0.0, 2.0, 1e9, 1e300, 2147483648.0, -7.0, std::nan("")}) {
        MCMTD_NAMESPACE::MCVarList list;
        list.Add(MCMTD_NAMESPACE::MCVariable::Categorical("c", 2), LyingEncoder(answer));
        const MADistStats observed = Summary(list, Column({0, 1}));
        const auto results = MATestVariables(reference, observed);
        EXPECT_EQ(results.at(0).status.GetCode(), 180020) << answer;
        EXPECT_EQ(results.at(0).pValue, -1.0) << answer;
        const std::vector<int> codes = MACellsOf(reference, 0, observed, 0).value().newCodes;
        EXPECT_EQ(std::count(codes.begin(), codes.end(), 0), 1) << answer;
    }
}

}  // namespace
