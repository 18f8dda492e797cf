// Lets the program run out of memory at every single allocation: it says so and exits with 2, and
// leaves a reference that was there as it was.

#include <gtest/gtest.h>

#include <array>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>
#include <vector>

#include "TempFile.h"
#include "app/commands/Program.h"
#include "fakes/FailingAllocations.h"

namespace {

using fakes::TempFile;

// A stream that takes no memory.
class FixedBuffer : public std::streambuf {
public:
    void Clear() { setp(mText.data(), mText.data() + mText.size()); }
    std::string_view Text() const {
        return {mText.data(), static_cast<std::size_t>(pptr() - pbase())};
    }

private:
    std::array<char, 65536> mText{};
};

struct Run {
    const char* name;
    std::vector<std::string> arguments;
};

class AllocationFailure : public testing::TestWithParam<Run> {
protected:
    // Gives the exit status when the n-th allocation and all behind it fail; -1: none fails.
    int RunWith(long allocations, std::string_view& complaint) {
        static FixedBuffer outBuffer;
        static FixedBuffer errBuffer;
        outBuffer.Clear();
        errBuffer.Clear();
        std::ostream out(&outBuffer);
        std::ostream err(&errBuffer);
        std::vector<const char*> argv{"accredit"};
        for (const std::string& argument : mArguments) argv.push_back(argument.c_str());
        fakes::gAllocationsUntilFailure = allocations;
        const int status =
            app::RunProgram(static_cast<int>(argv.size()), argv.data(), out, err, false);
        fakes::gAllocationsUntilFailure = -1;
        complaint = errBuffer.Text();
        return status;
    }

    const TempFile mData{"a name that takes memory,c\n1,x\n2,\"y \"\"z\"\"\"\n4,x\n"};
    const TempFile mNew{"c,a name that takes memory\nx,3\nunknown,7\n"};
    const TempFile mOutput{"before"};
    std::vector<std::string> mArguments;
};

TEST_P(AllocationFailure, IsToldAndLosesNothing) {
    const TempFile stored("");
    mArguments = {"learn", mData.Path(), "--output", stored.Path()};
    std::string_view complaint;
    ASSERT_EQ(RunWith(-1, complaint), 0) << complaint;
    mArguments.clear();
    for (const std::string& argument : GetParam().arguments) {
        mArguments.push_back(argument == "DATA"     ? mData.Path()
                             : argument == "STORED" ? stored.Path()
                             : argument == "NEW"    ? mNew.Path()
                             : argument == "OUTPUT" ? mOutput.Path()
                                                    : argument);
    }
    const int expected = RunWith(-1, complaint);
    mOutput.Write("before");
    for (long n = 0;; ++n) {
        const long live = fakes::gLiveAllocations;
        const int status = RunWith(n, complaint);
        if (complaint != "accredit: there is not enough memory\n") {
            EXPECT_EQ(status, expected) << "allocation " << n << ": " << complaint;
            break;
        }
        ASSERT_EQ(status, 2) << "allocation " << n;
        ASSERT_EQ(fakes::gLiveAllocations, live) << "allocation " << n << " leaks";
        ASSERT_EQ(mOutput.Read(), "before") << "allocation " << n;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Program, AllocationFailure,
    testing::Values(Run{"Learn", {"learn", "DATA", "--output", "OUTPUT", "--missing=-"}},
                    Run{"CheckData", {"check", "--weight=c=2", "DATA", "NEW"}},
                    Run{"CheckStored", {"check", "--format=json", "STORED", "NEW"}},
                    Run{"Show", {"show", "STORED"}},
                    Run{"ShowJson", {"show", "--format=json", "STORED"}},
                    Run{"WrongUsage", {"check", "--fail-below=2", "DATA", "NEW"}},
                    Run{"WrongData", {"check", "--continuous=c", "DATA", "NEW"}}),
    [](const auto& run) { return std::string(run.param.name); });

}  // namespace
