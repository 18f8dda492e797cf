#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "accredit/diststats/MAPredictorDist.h"
#include "accredit/diststats/MAProblems.h"
#include "fakes/Documents.h"
#include "fakes/Summaries.h"

namespace {

using fakes::Column;
using fakes::List;
using fakes::Query;

template <class Stats>
long CodeOfExport(const Stats& stats) {
    std::ostringstream out;
    const long code = fakes::CodeOf([&] { return stats.ExportAsXML(nullptr, out); });
    EXPECT_EQ(out.str().empty(), code != 0);
    if (code == 0) fakes::KeepDocument(out.str());
    return code;
}

TEST(PMMLExport, WritesTheInputVariablesInListOrder) {
    // The mean of x is 10 and its standard deviation 2.
    std::vector<fakes::Numbers> records;
    for (const double x : {8, 8, 8, 8, 10, 12, 12, 12, 12}) {
        records.push_back({0, x, x < 10 ? 0.0 : 1.0, 7, fakes::kMissing, fakes::kMissing});
    }
    const MADistStats stats =
        fakes::Summary(List("(id) x c:red,blue's constant unseen#1,2.5 missing"), records);
    const MCApplicInfo4XML info{"tester", "1.2", "2024-01-31 12:00:00 GMT +00:00"};
    std::ostringstream expected;
    expected << std::ifstream(ACCREDIT_TABLE_FOLDER "/expected.pmml").rdbuf();
    for (const MADistStats& each : {stats, MADistStats(stats)}) {
        std::ostringstream out;
        EXPECT_TRUE(each.ExportAsXML(&info, out).IsOK());
        EXPECT_EQ(out.str(), expected.str());
        fakes::KeepDocument(out.str());
    }
}

// The problem is told as its slot, the name of its kind and the code of a category.
TABLE_TEST(PMMLExport, IsRefusedOnlyForAVariableThatIsFound, 5) {
    static const std::vector<std::string> kinds = {
        "nothing",           "name",    "repeated name", "too many categories", "category",
        "repeated category", "summary", "cut points",    "frequencies"};
    const MADistStats stats =
        row.Text(1).empty()
            ? MADistStats(new MADistStatsImp(fakes::Loaded(row.Text(0), row.Text(2))))
            : fakes::Summary(List(row.Text(0)), row.Lists(1));
    const std::vector<std::string> missing = fakes::Words(row.Text(3), ',');
    const MAVariableProblem problem = MAFindExportProblem(stats, missing);
    EXPECT_EQ(std::to_string(problem.slot) + ' ' +
                  kinds.at(static_cast<std::size_t>(problem.kind)) + ' ' +
                  std::to_string(problem.category),
              row.Text(4));
    EXPECT_TRUE(!missing.empty() || CodeOfExport(stats) == (problem.slot < 0 ? 0 : 180009));
}

TEST(PMMLExport, AStreamThatIsFullAtAnyByteHoldsTheBeginning) {
    const MADistStats stats = fakes::Summary(List("x c:a"), {{1, 0}, {2, 0}});
    const std::vector<std::function<void(std::ostream&)>> writers = {
        [&](std::ostream& out) { EXPECT_TRUE(stats.ExportAsXML(nullptr, out).IsOK()); },
        [&](std::ostream& out) { stats.Display("title", out); }};
    for (const auto& write : writers) {
        std::ostringstream whole;
        write(whole);
        for (std::size_t room = 0; room < whole.str().size(); ++room) {
            for (const bool throws : {false, true}) {
                fakes::FullBuffer full(room, throws);
                std::ostream out(&full);
                if (throws) out.exceptions(std::ios::badbit);
                bool thrown = false;
                try {
                    write(out);
                } catch (const std::ios::failure&) {
                    thrown = true;
                }
                EXPECT_EQ(thrown, throws) << room;
                EXPECT_TRUE(out.bad()) << room;
                EXPECT_EQ(full.taken, whole.str().substr(0, room));
            }
        }
    }
}

TEST(PMMLExport, AsksTheQueryBeforeEveryVariable) {
    for (const int cancelAt : {1, 2, 3, 4}) {
        Query query(cancelAt);
        EXPECT_EQ(CodeOfExport(MADistStatsImp(List("a b c"), &query)), cancelAt <= 3 ? 1 : 0);
        EXPECT_EQ(query.polls, std::min(cancelAt, 3));
    }
}

static_assert(!std::is_copy_constructible_v<MAPredictorDist>);
static_assert(std::has_virtual_destructor_v<MAPredictorDist>);

TEST(MAPredictorDist, KeepsTheSummaryOfTheLastSuccess) {
    fakes::RecordSource source(Column({1, 2, 3, 4}));
    const auto noInput = List("(y)");
    EXPECT_EQ(fakes::CodeOf([&] { const MAPredictorDist none(noInput, source, nullptr); }), 180002);
    const auto list = List("x");
    MAPredictorDist dist(list, source, nullptr);
    std::ostringstream out;
    EXPECT_EQ(dist.GetDistStats().GetVarCount(), 0U);
    EXPECT_EQ(dist.ExportDistStatsXML(nullptr, out).GetCode(), 180008);
    EXPECT_EQ(out.str(), "");

    ASSERT_TRUE(dist.ComputeDistStats().IsOK());
    EXPECT_EQ(source.rewinds, 1);
    const std::string summary = fakes::Contents(dist.GetDistStats());
    EXPECT_TRUE(dist.ExportDistStatsXML(nullptr, out).IsOK());
    fakes::KeepDocument(out.str());

    source.Rewind();
    source.FailAt(source.fetches + 3, MCCommon::MultiPassRecordIter::ErrorStateFailed);
    EXPECT_EQ(dist.ComputeDistStats().GetCode(), 180004);
    EXPECT_EQ(fakes::Contents(dist.GetDistStats()), summary);
    source.FailAt(0, 0);
    while (source.HasMoreRecords()) source.GetNextRecord();
    EXPECT_TRUE(dist.ComputeDistStats().IsOK());
    EXPECT_EQ(dist.GetDistStats().GetNumberOfCases(0), 0U) << "read on from where the source stood";
}

TEST(MAPredictorDist, CanBeStoppedInEitherPassAndInTheExport) {
    const auto list = List("x");
    fakes::RecordSource source(Column({1, 2, 3, 4}));
    for (const int cancelAt : {1, 2, 3}) {
        Query query(cancelAt);
        MAPredictorDist dist(list, source, &query);
        source.Rewind();
        EXPECT_EQ(dist.ComputeDistStats().GetCode(), cancelAt == 3 ? 0 : 1);
        EXPECT_EQ(dist.GetDistStats().GetVarCount(), cancelAt == 3 ? 1U : 0U);
        std::ostringstream out;
        EXPECT_EQ(dist.ExportDistStatsXML(nullptr, out).GetCode(), cancelAt == 3 ? 1 : 180008);
        EXPECT_EQ(out.str(), "");
    }
}

// Has 1, 0 and -0.
class TwoZeros : public MCMTD_NAMESPACE::MCNumberEncoder {
public:
    int GetNumCategories() const override { return 3; }
    double DecodeNumber(int code) const override { return code == 2 ? -0.0 : 1.0 - code; }
};

TEST(PMMLExport, TakesTwoZerosForOneCategory) {
    MCMTD_NAMESPACE::MCVarList list;
    list.Add(MCMTD_NAMESPACE::MCVariable::Categorical("z", 3), TwoZeros());
    const MADistStats stats(new MADistStatsImp(list, nullptr));
    EXPECT_EQ(CodeOfExport(stats), MAStatusExportFailed);
    EXPECT_EQ(MAFindExportProblem(stats).kind, MAProblemKind::RepeatedCategory);
    EXPECT_EQ(MAFindExportProblem(stats).category, 2);
}

}  // namespace
