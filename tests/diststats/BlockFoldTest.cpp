#include "accredit/diststats/internal/BlockFold.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>

#include "accredit/host/MCMV.h"

namespace {

using namespace MADetail;

// The mean 0 moved by x in record n, which is x / n.
void ExpectQuotients(const BlockFold& fold, const GroupOfDoubles& x, double n,
                     bool isOfTheRecords) {
    Moments moments{};
    for (std::size_t i = 0; i < kGroup; ++i) {
        moments.count.lanes[i] = n - 1.0;
        moments.min.lanes[i] = moments.max.lanes[i] = 1.0;
    }
    const Block block{x.lanes, kGroup, 1, isOfTheRecords ? n - 1.0 : n};
    fold.foldMoments(block, 0, &moments, 1);
    for (std::size_t i = 0; i < kGroup; ++i) {
        // A sum with 0 has no -0.
        const double mean = 0.0 + x.lanes[i] / n;
        const double squares = (n - 1.0) / n * (x.lanes[i] * x.lanes[i]);
        ASSERT_EQ(std::memcmp(&moments.mean.lanes[i], &mean, sizeof mean), 0)
            << fold.lanes << " lanes: " << std::hexfloat << x.lanes[i] << " / " << n;
        ASSERT_EQ(std::memcmp(&moments.squares.lanes[i], &squares, sizeof squares), 0);
    }
}

// A dividend whose quotient by n is hard to round: as near as possible to halfway between two
// doubles, or to a double.
double Dividend(std::mt19937_64& random, double n) {
    const double quotient = std::ldexp(static_cast<double>(random() >> 11), -52);
    const double product = quotient * n;
    const double rest = std::fma(quotient, n, -product);
    const double halfway = product + (rest + std::ldexp(n, std::ilogb(quotient) - 53));
    const double bits =
        std::ldexp(static_cast<double>(random() >> 11), static_cast<int>(random() % 7) - 3);
    switch (random() % 4) {
        case 0:
            return bits;
        case 1:
            return product;
        case 2:
            return halfway;
        default:
            return std::nextafter(halfway, random() % 2 == 0 ? 0.0 : HUGE_VAL);
    }
}

// So many million quotients for each kind of registers; see tests/README.md.
std::uint64_t Millions() {
    const char* const asked = std::getenv("ACCREDIT_MILLIONS_OF_QUOTIENTS");
    return asked ? std::strtoull(asked, nullptr, 10) : 1;
}

TEST(BlockFold, DividesAsADivisionRounds) {
    const std::uint64_t rounds = Millions() * 1000000 / kGroup;
    for (const std::size_t lanes : {2U, 4U, 8U}) {
        const BlockFold& fold = WidestBlockFold(lanes);
        std::mt19937_64 random(7);
        for (std::uint64_t round = 0; round < rounds; ++round) {
            const double n = 1.0 + std::floor(std::ldexp(static_cast<double>(random() >> 11),
                                                         -3 - static_cast<int>(random() % 50)));
            // All numbers have one size, so that not all are divided for the sake of one; some are
            // at the ends of what is corrected.
            const int size = round % 8 == 0 ? static_cast<int>(random() % 2100) - 1070 : 0;
            GroupOfDoubles x{};
            for (double& each : x.lanes) {
                each = std::ldexp(Dividend(random, n), size) * (random() % 2 == 0 ? 1.0 : -1.0);
                if (round % 64 == 0 && random() % 8 == 0) each = 0.0;
            }
            ASSERT_NO_FATAL_FAILURE(ExpectQuotients(fold, x, n, random() % 2 == 0));
        }
    }
}

TEST(BlockFold, IsTheWidestThatIsAskedFor) {
    for (const std::size_t lanes : {0U, 2U, 3U, 4U, 8U, 100U}) {
        EXPECT_LE(WidestBlockFold(lanes).lanes, lanes < 2 ? 2 : lanes);
    }
#ifdef __x86_64__
    const bool hasFour = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
    EXPECT_EQ(WidestBlockFold(4).lanes, hasFour ? 4 : 2);
    EXPECT_EQ(WidestBlockFold(8).lanes == 8, hasFour && __builtin_cpu_supports("avx512f") &&
                                                 __builtin_cpu_supports("avx512dq") &&
                                                 __builtin_cpu_supports("avx512vl"));
#endif
}

// All tests of this program have registers of at most so many doubles, if the environment says so.
class RegistersThatAreAskedFor : public testing::Environment {
public:
    void SetUp() override {
        const char* const asked = std::getenv("ACCREDIT_LANES");
        if (asked) UseBlockFold(WidestBlockFold(std::strtoul(asked, nullptr, 10)));
    }
};

const auto* const gRegisters = testing::AddGlobalTestEnvironment(new RegistersThatAreAskedFor);

}  // namespace
