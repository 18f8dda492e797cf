// The distribution functions over their regions, beside the same functions of the public libraries
// that were found; without those that have no answer to most arguments of a region. "ns/call" is
// the time of one call through a function pointer.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "accredit/distfun/MCDistFun.h"
#include "distfun/Libraries.h"
#include "distfun/Regions.h"

namespace {

using DistFun::Arguments;
using MAMath::MCDistFun;

constexpr std::size_t kCalls = 64;

void Report(benchmark::State& state, double calls) {
    state.counters["ns/call"] = benchmark::Counter(
        calls * 1e-9, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void Calls(benchmark::State& state, const std::vector<Arguments>& arguments,
           double (*call)(const Arguments&)) {
    for (auto _ : state) {
        double sum = 0.0;
        for (const Arguments& a : arguments) sum += call(a);
        benchmark::DoNotOptimize(sum);
    }
    Report(state, static_cast<double>(arguments.size()));
}

// The walks over grouped data, on 1000 values with a weight of 1 to 5 each.
struct Grouped {
    static constexpr long kValues = 1000;
    Grouped() {
        for (long i = 0; i < kValues; ++i) {
            values.push_back(static_cast<double>(i));
            weights.push_back(static_cast<double>(1 + i * 7 % 5));
            total += weights.back();
        }
    }
    std::vector<double> values;
    std::vector<double> weights;
    double total = 0.0;
};

void Percentile(benchmark::State& state) {
    const Grouped data;
    for (auto _ : state) {
        double result = 0.0;
        long code = 0;
        MCDistFun::GPTile(Grouped::kValues, 75.0, data.values, data.weights, {}, 0, result, code);
        benchmark::DoNotOptimize(result);
    }
    Report(state, 1.0);
}

void MedianInterval(benchmark::State& state) {
    const Grouped data;
    for (auto _ : state) {
        double lower = 0.0;
        double upper = 0.0;
        double actual = 0.0;
        MCDistFun::Mednci(Grouped::kValues, data.values, data.weights, data.total, 95.0, true,
                          lower, upper, actual);
        benchmark::DoNotOptimize(actual);
    }
    Report(state, 1.0);
}

void RegisterAll() {
    for (const DistFun::Region& region : DistFun::Regions()) {
        const std::vector<Arguments> arguments = DistFun::Draw(region, kCalls);
        for (const auto& implementation : DistFun::ImplementationsOf(region.function)) {
            const auto answers = std::count_if(
                arguments.begin(), arguments.end(),
                [&](const Arguments& a) { return std::isfinite(implementation.call(a)); });
            if (2 * static_cast<std::size_t>(answers) < kCalls) continue;
            const std::string name =
                std::string(region.function) + "/" + region.name + "/" + implementation.library;
            benchmark::RegisterBenchmark(name.c_str(), Calls, arguments, implementation.call);
        }
    }
    benchmark::RegisterBenchmark("GPTile/1000 values/Accredit", Percentile);
    benchmark::RegisterBenchmark("Mednci/1000 values/Accredit", MedianInterval);
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    RegisterAll();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
