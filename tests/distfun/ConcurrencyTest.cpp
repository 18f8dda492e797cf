#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <vector>

#include "Functions.h"

namespace {

std::vector<double> AllResults() {
    std::vector<double> results;
    for (const Function& function : kFunctions) {
        for (const double x : {0.01, 0.3, 0.5, 0.975, 3.0, 12.0}) {
            long code = 0;
            results.push_back(function.call(x, 5.0, 0.4, code));
            results.push_back(static_cast<double>(code));
        }
    }
    const std::vector<double> values = {1, 2, 3, 5, 8};
    const std::vector<double> weights = {9, 1, 4, 4, 2};
    double place = 0.0;
    long code = 0;
    MAMath::MCDistFun::GPTile(5, 40.0, values, weights, {}, 0, place, code);
    double lower = 0.0;
    double upper = 0.0;
    double actual = 0.0;
    MAMath::MCDistFun::Mednci(5, values, weights, 20.0, 95.0, true, lower, upper, actual);
    results.insert(results.end(), {place, lower, upper, actual});
    return results;
}

TEST(Concurrency, CallsThatOverlapGiveTheSameBits) {
    const std::vector<double> alone = AllResults();
    std::vector<std::vector<double>> together(4);
    std::vector<std::thread> threads;
    for (std::vector<double>& results : together) {
        threads.emplace_back([&results] {
            for (int round = 0; round < 50; ++round) results = AllResults();
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (const std::vector<double>& results : together) {
        ASSERT_EQ(results.size(), alone.size());
        EXPECT_EQ(std::memcmp(results.data(), alone.data(), alone.size() * sizeof(double)), 0);
    }
}

}  // namespace
