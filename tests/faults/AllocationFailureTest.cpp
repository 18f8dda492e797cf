// Fails every single allocation of every public operation, one at a time: nothing may leak, and
// every object must be in the state that its contract promises.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "accredit/accreditation/MAAccreditor.h"
#include "accredit/accreditation/MAVariableResult.h"
#include "accredit/diststats/MAMerge.h"
#include "accredit/diststats/MAPredictorDist.h"
#include "accredit/diststats/MAProblems.h"
#include "accredit/diststats/MASummaryBuilder.h"
#include "accredit/diststats/MAUniStats.h"
#include "accredit/host/MCPMMLExporter.h"
#include "accredit/host/MCTableRecordIter.h"
#include "accredit/host/XMLElement.h"
#include "fakes/FailingAllocations.h"
#include "fakes/Summaries.h"

namespace {

using fakes::Contents;
using fakes::gAllocationsUntilFailure;
using fakes::gLiveAllocations;
using fakes::List;
using MCCommon::MCTableRecordIter;
using MCXML_NAMESPACE::XMLElement;

constexpr const char* kLongName = "a-name-too-long-for-the-place-that-a-short-string-has";

// Runs `once`, which gets a function that lets the n-th allocation of what it is given fail and
// says whether it did, for n = 1, 2, ... until nothing fails any more.
using Guarded = std::function<bool(const std::function<void()>& operation)>;

void FailEveryAllocation(const std::function<void(const Guarded& guarded)>& once) {
    bool failed = true;
    for (long n = 0; failed; ++n) {
        ASSERT_LT(n, 100000) << "the operation never succeeds";
        SCOPED_TRACE("allocation " + std::to_string(n));
        failed = false;
        const Guarded guarded = [&](const std::function<void()>& operation) {
            bool thrown = false;
            gAllocationsUntilFailure = n;
            try {
                operation();
            } catch (const std::bad_alloc&) {
                thrown = true;
            }
            gAllocationsUntilFailure = -1;
            failed = failed || thrown;
            return thrown;
        };
        const long before = gLiveAllocations;
        once(guarded);
        EXPECT_EQ(gLiveAllocations, before) << "memory leaked";
    }
}

const auto kList = List(std::string("x c:a,") + kLongName);
const std::vector<double> kTable = {1, 0, 2, 1, 3, 1, 4, 0, 5, 1, 9, 0};

MADistStatsImp* NewSummary() {
    MCTableRecordIter iter(kTable, 2);
    return new MADistStatsImp(kList, iter, {}, nullptr);
}

TEST(AllocationFailure, ListsAndEncodersKeepTheirState) {
    FailEveryAllocation([](const Guarded& guarded) {
        auto list = kList;
        const MCMTD_NAMESPACE::MCVariable variable(kLongName, 2);
        bool failed = guarded([&] { list.Add(variable, MCMTD_NAMESPACE::MCNumberEncoder({1.5})); });
        EXPECT_EQ(list.Size(), failed ? 2U : 3U);
        EXPECT_EQ(list.FindVariable(kLongName), failed ? -1 : 2);

        auto target = List("y");
        failed = guarded([&] { target = list; });
        EXPECT_EQ(target.FindVariable("y"), failed ? 0 : -1);
        EXPECT_EQ(target.FindVariable("x"), failed ? -1 : 0);

        MCMTD_NAMESPACE::MCStringEncoder strings({"a"});
        failed = guarded([&] { strings.AddCategory(kLongName); });
        EXPECT_EQ(strings.GetNumCategories(), failed ? 1 : 2);
        EXPECT_EQ(strings.EncodeString(kLongName), failed ? -1.0 : 1.0);
        MCMTD_NAMESPACE::MCNumberEncoder numbers({1.0});
        failed = guarded([&] { numbers.AddCategory(2.0); });
        EXPECT_EQ(numbers.GetNumCategories(), failed ? 1 : 2);

        MCMTD_NAMESPACE::MCStringEncoder otherStrings({"x", "y", "z"});
        failed = guarded([&] { strings = otherStrings; });
        EXPECT_EQ(strings.EncodeString("a"), failed ? 0.0 : -1.0);
        EXPECT_EQ(strings.EncodeString(strings.DecodeString(0)), 0.0);
        MCMTD_NAMESPACE::MCNumberEncoder otherNumbers({7.0, 8.0, 9.0});
        failed = guarded([&] { numbers = otherNumbers; });
        EXPECT_EQ(numbers.EncodeNumber(1.0), failed ? 0.0 : -1.0);
        EXPECT_EQ(numbers.EncodeNumber(numbers.DecodeNumber(0)), 0.0);

        const auto shared = std::make_shared<MCMTD_NAMESPACE::MCVariable>("shared", 1);
        failed = guarded([&] { target.AddShared(shared); });
        EXPECT_EQ(target.FindVariable("shared") < 0, failed);
        EXPECT_EQ(shared.use_count(), failed ? 1 : 2);
        guarded([&] { const auto copy = list; });
    });
}

TEST(AllocationFailure, SummariesAreWholeOrNotThere) {
    FailEveryAllocation([&](const Guarded& guarded) {
        guarded([] { delete NewSummary(); });
        const std::unique_ptr<MADistStatsImp> summary(NewSummary());
        MADistStatsImp target(List("y"), nullptr);
        const std::string shell = Contents(target);
        bool failed = guarded([&] { target = *summary; });
        EXPECT_EQ(Contents(target), failed ? shell : Contents(*summary));

        const MADistStats handle(NewSummary());
        MADistStats other(NewSummary());
        failed = guarded([&] { other = handle; });
        EXPECT_EQ(other.GetVarCount(), failed ? 0U : 2U) << "a failed assignment leaves it empty";
        guarded([&] { const MADistStats copy(handle); });
    });
}

TEST(AllocationFailure, LoadingReplacesAPairOrNothing) {
    const fakes::Numbers frequencies = {4, 5, 6};
    const fakes::Numbers cutPoints = {5, 6};
    const fakes::Numbers categories = {4, 5};
    const MCMTD_NAMESPACE::MCUniStats ofCategories("c", 9, categories);
    const MCMTD_NAMESPACE::MCUniStats ofBins("x", 3, {1, 2, 1.5, 0.5},
                                             {MCMV::Missing(), 1.5, MCMV::Missing()}, {2, 1});
    FailEveryAllocation([&](const Guarded& guarded) {
        guarded([] { const MADistStatsImp none(kList, nullptr); });
        MADistStatsImp shell(kList, nullptr);
        EXPECT_TRUE(shell.SetFreqs(0, {1, 2}, {5}));
        bool failed = guarded([&] { shell.SetFreqs(0, frequencies, cutPoints); });
        EXPECT_EQ(Contents(shell, 0), failed ? "0; M M 0 0; 5; 1 2" : "0; M M 0 0; 5 6; 4 5 6");
        failed = guarded([&] { shell.SetFreqs(1, categories); });
        EXPECT_EQ(Contents(shell, 1), failed ? "0; M M 0 0; ;" : "0; M M 0 0; ; 4 5");
        failed = guarded([&] { shell.SetAllStats(ofCategories); });
        EXPECT_EQ(shell.GetNumberOfCases(1), failed ? 0U : 9U);
        const std::string before = Contents(shell, 0);
        failed = guarded([&] { shell.SetAllStats(ofBins); });
        EXPECT_EQ(Contents(shell, 0), failed ? before : "3; 1 2 1.5 0.5; 1.5; 2 1");
        MCMTD_NAMESPACE::MCUniStats stats = ofCategories;
        failed = guarded([&] { stats = ofBins; });
        EXPECT_EQ(stats.GetVarName(), failed ? "c" : "x");
        EXPECT_EQ(stats.IsCategorical(), failed);
        EXPECT_EQ(stats.GetFrequencies(), failed ? categories : fakes::Numbers({2, 1}));
    });
}

TEST(AllocationFailure, FrontEndsKeepWhatTheyPromise) {
    const MADistStats reference(NewSummary());
    const std::vector<fakes::Numbers> cutPoints = {reference.GetCutPoints(0), {}};
    FailEveryAllocation([&](const Guarded& guarded) {
        MCTableRecordIter iter(kTable, 2);
        guarded([&] { const MAAccreditor none(kList, iter, nullptr); });
        MAAccreditor accreditor(kList, iter, nullptr);
        bool failed = guarded([&] { accreditor.ComputeDistStats(cutPoints); });
        EXPECT_EQ(accreditor.GetDistStats().GetVarCount(), failed ? 0U : 2U);
        iter.Rewind();
        EXPECT_TRUE(accreditor.ComputeDistStats(cutPoints).IsOK());
        failed = guarded([&] { accreditor.ComputeDistStats(cutPoints); });
        EXPECT_EQ(accreditor.GetDistStats().GetNumberOfCases(0), failed ? 6U : 0U)
            << "a failed run keeps the earlier summary";
        iter.Rewind();
        EXPECT_TRUE(accreditor.ComputeDistStats(cutPoints).IsOK());

        failed = guarded([&] { accreditor.ComputeAccreditation(reference, {}); });
        EXPECT_EQ(accreditor.GetAccreditation(), failed ? -1.0 : 1.0);
        guarded([&] { MATestVariables(reference, accreditor.GetDistStats()); });
        std::vector<int> matches = {7};
        failed = guarded([&] { MAAccreditor::MatchVariables(kList, kList, matches); });
        EXPECT_EQ(matches, failed ? std::vector<int>{7} : (std::vector<int>{0, 1}));

        iter.Rewind();
        guarded([&] { const MAPredictorDist none(kList, iter, nullptr); });
        MAPredictorDist predictor(kList, iter, nullptr);
        failed = guarded([&] { predictor.ComputeDistStats(); });
        EXPECT_EQ(predictor.GetDistStats().GetVarCount(), failed ? 0U : 2U);
        iter.Rewind();
        EXPECT_TRUE(predictor.ComputeDistStats().IsOK());
        failed = guarded([&] { predictor.ComputeDistStats(); });
        EXPECT_EQ(predictor.GetDistStats().GetNumberOfCases(0), failed ? 6U : 0U);
        std::ostringstream out(std::string(1 << 16, ' '));
        failed = guarded([&] { predictor.ExportDistStatsXML(nullptr, out); });
        EXPECT_TRUE(!failed || out.tellp() == 0);
    });
}

TEST(AllocationFailure, ARecordIsAddedOrNothingChanges) {
    const auto list = List("x c:a,b y d/2");
    const std::vector<fakes::Numbers> cutPoints = {{1, 2}, {}, {1, 2, 3, 4, 5, 6}, {}};
    FailEveryAllocation([&](const Guarded& guarded) {
        guarded([&] { const MASummaryBuilder none(list, cutPoints); });
        MASummaryBuilder builder(list, cutPoints);
        const std::vector<fakes::Numbers> records = {{1, 0, 2, 9}, {2, 70, 3, 4}, {3, 1, 4, 300}};
        for (const fakes::Numbers& record : records) {
            const std::string before = Contents(builder.GetDistStats());
            const bool failed = guarded([&] { builder.Add(record); });
            EXPECT_EQ(Contents(builder.GetDistStats()) == before, failed);
            EXPECT_TRUE(!failed || builder.Add(record).IsOK());
        }
        const std::string all = Contents(fakes::Summary(list, records, cutPoints));
        guarded([&] { EXPECT_EQ(builder.GetDistStats().GetVarCount(), 4U); });
        EXPECT_EQ(Contents(builder.GetDistStats()), all);
        const MADistStats first = builder.GetDistStats();
        const bool failed = guarded([&] { builder.Clear(); });
        EXPECT_EQ(Contents(builder.GetDistStats()) == all, failed);
        EXPECT_EQ(builder.GetRecordCount(), failed ? 3U : 0U);
        guarded([&] {
            const MAMerged merged = MAMergeDistStats(first, first);
            EXPECT_EQ(merged.stats.GetNumberOfCases(0), 6U);
        });
        EXPECT_EQ(Contents(first), all);
    });
}

TEST(AllocationFailure, AnExportWritesAllOrNothing) {
    const std::unique_ptr<MADistStatsImp> summary(NewSummary());
    const MCApplicInfo4XML info{kLongName, "1", kLongName};
    FailEveryAllocation([&](const Guarded& guarded) {
        // The stream's own memory is there before it is written to.
        std::ostringstream out(std::string(1 << 16, ' '));
        out.seekp(0);
        const bool failed = guarded([&] { EXPECT_TRUE(summary->ExportAsXML(&info, out).IsOK()); });
        EXPECT_TRUE(!failed || out.tellp() == 0);
        guarded([&] { summary->Display(kLongName, out); });
        const MADistStats handle(NewSummary());
        guarded([&] { EXPECT_EQ(MAFindExportProblem(handle, {kLongName}).category, 1); });
        guarded([&] { EXPECT_EQ(MAFindBadCutPoints(kList, {{2, 1}, {}}), 0); });
        guarded([&] { EXPECT_EQ(MAUniStatsOf(handle, 1).GetVarName(), "c"); });
        MCPMMLExporter exporter(nullptr);
        guarded([&] { exporter.SetMissingValues({kLongName}); });

        const std::unique_ptr<XMLElement> element(XMLElement::Create("E"));
        element->SetAttribute("a", "old");
        const bool unset = guarded([&] { element->SetAttribute("b", kLongName); });
        guarded([&] { element->SetText(kLongName); });
        guarded([] { delete XMLElement::Create(kLongName); });
        guarded([&] { element->WriteTo(out, {}, 0); });
        std::ostringstream text;
        element->WriteTo(text, {}, 0);
        EXPECT_EQ(text.str().find(" b=") == std::string::npos, unset);
    });
}

}  // namespace
