// Lets the program run out of memory at every single allocation: it says so and exits with 2, and
// leaves a reference that was there as it was. A record that an application pushes in is added or
// not counted.

#include <gtest/gtest.h>

#include <new>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>
#include <vector>

#include "accredit/documents/NewRecords.h"
#include "app/Accredit.h"
#include "fakes/FailingAllocations.h"
#include "fakes/Summaries.h"

namespace {

// A stream that takes no memory.
struct FixedBuffer : std::streambuf {
    FixedBuffer() { setp(bytes, bytes + sizeof bytes); }
    std::string_view Text() const { return {bytes, static_cast<std::size_t>(pptr() - bytes)}; }

    char bytes[65536];
};

TABLE_TEST(AllocationFailure, IsToldAndLosesNothing, 1) {
    const fakes::Files files("a name that takes memory,c\n1,x\n2,\"y \"\"z\"\"\"\n4,x\n",
                             "c,a name that takes memory\nx,3\nunknown,7\n");
    ASSERT_EQ(fakes::Run("learn A --output S; learn --bins-of S B --output D").status, 0);
    fakes::WriteFile("C", "categorical = [\"c\", \"a name that takes memory\"]  # both\n");
    const fakes::CommandLine command(row.Text(0));
    const int expected = fakes::Run(row.Text(0)).status;
    for (long n = 0;; ++n) {
        fakes::WriteFile("R", "before");
        FixedBuffer outBuffer;
        FixedBuffer errBuffer;
        std::ostream out(&outBuffer);
        std::ostream err(&errBuffer);
        const long live = fakes::gLiveAllocations;
        fakes::gAllocationsUntilFailure = n;
        const int status = command.Run(out, err);
        fakes::gAllocationsUntilFailure = -1;
        if (errBuffer.Text() != "accredit: there is not enough memory\n") {
            EXPECT_EQ(status, expected) << "allocation " << n << ": " << errBuffer.Text();
            break;
        }
        ASSERT_EQ(status, 2) << "allocation " << n;
        ASSERT_EQ(fakes::gLiveAllocations, live) << "allocation " << n << " leaks";
        ASSERT_EQ(fakes::ReadFile("R"), "before") << "allocation " << n;
    }
}

TEST(AllocationFailure, LeavesAPushedRecordUncounted) {
    MADocuments::Reference reference;
    reference.stats = MADistStats(new MADistStatsImp(
        fakes::Loaded("c:a x n#1", "c; 3; 3 / x; 3; 1 3 2 1; M 2 M; 2 1 / n; 1; 1")));
    const std::vector<MADocuments::RecordValue> record = {
        "a text too long for the place that a short string has", "", 7};
    for (long n = 0, failed = 1; failed > 0; ++n) {
        failed = 0;
        MADocuments::NewRecords records(reference);
        for (int time = 0; time < 2; ++time) {
            fakes::gAllocationsUntilFailure = n;
            try {
                records.Add(record);
            } catch (const std::bad_alloc&) {
                ++failed;
            }
            fakes::gAllocationsUntilFailure = -1;
            EXPECT_EQ(static_cast<long>(records.RecordCount()) + failed, time + 1);
        }
        const MADocuments::Reference summary = records.Summary();
        EXPECT_EQ(summary.stats.GetNumberOfCases(0), records.RecordCount());
        EXPECT_EQ(summary.stats.GetNumberOfCases(2), records.RecordCount());
        EXPECT_EQ(summary.uncounted[1].missing, records.RecordCount());
    }
}

}  // namespace
