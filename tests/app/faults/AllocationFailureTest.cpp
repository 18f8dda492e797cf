// Lets the program run out of memory at every single allocation: it says so and exits with 2, and
// leaves a reference that was there as it was.

#include <gtest/gtest.h>

#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

#include "app/Accredit.h"
#include "fakes/FailingAllocations.h"

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
    ASSERT_EQ(fakes::Run("learn A --output S").status, 0);
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

}  // namespace
