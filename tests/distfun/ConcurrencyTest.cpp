#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <vector>

#include "tests/distfun/Functions.h"

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
