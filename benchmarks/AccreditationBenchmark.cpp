// What stands around the data pass: matching two lists, the two tests, writing a summary and
// loading one. "ns/variable" is the time a variable.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

#include "accredit/accreditation/MAAccreditor.h"
#include "accredit/accreditation/MAVariableResult.h"
#include "accredit/host/MCStringEncoder.h"
#include "accredit/host/MCTableRecordIter.h"
#include "accredit/host/MCUniStats.h"
#include "accredit/host/MCVariable.h"

namespace {

using MCCommon::MCTableRecordIter;
using MCMTD_NAMESPACE::MCStringEncoder;
using MCMTD_NAMESPACE::MCUniStats;
using MCMTD_NAMESPACE::MCVariable;
using MCMTD_NAMESPACE::MCVarList;

constexpr int kCategories = 12;

MCVarList ListOf(int count, bool categorical, bool reversed = false) {
    std::vector<std::string> categories;
    for (int c = 0; c < kCategories; ++c) categories.push_back("category " + std::to_string(c));
    MCVarList list;
    for (int i = 0; i < count; ++i) {
        const std::string name = "variable " + std::to_string(reversed ? count - 1 - i : i);
        if (categorical) {
            list.Add(MCVariable::Categorical(name, kCategories), MCStringEncoder(categories));
        } else {
            list.Add(MCVariable::Continuous(name));
        }
    }
    return list;
}

MADistStats SummaryOf(const MCVarList& list) {
    std::vector<double> values;
    const auto width = static_cast<int>(list.Size());
    for (int row = 0; row < 2 * kCategories; ++row) {
        values.insert(values.end(), list.Size(), static_cast<double>(row % kCategories));
    }
    MCTableRecordIter iter(values, width);
    return MADistStats(new MADistStatsImp(list, iter, {}, nullptr));
}

void Report(benchmark::State& state, std::int64_t variables) {
    state.counters["ns/variable"] = benchmark::Counter(
        static_cast<double>(variables) * 1e-9,
        benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void Matching(benchmark::State& state) {
    const auto count = static_cast<int>(state.range(0));
    const MCVarList first = ListOf(count, false);
    const MCVarList second = ListOf(count, false, true);
    std::vector<int> matches;
    for (auto _ : state) {
        benchmark::DoNotOptimize(MAAccreditor::MatchVariables(first, second, matches).IsOK());
    }
    Report(state, count);
}
BENCHMARK(Matching)->Arg(1000)->Arg(100000);

void Tests(benchmark::State& state, bool categorical) {
    constexpr int kVariables = 1000;
    const MADistStats reference = SummaryOf(ListOf(kVariables, categorical));
    for (auto _ : state) benchmark::DoNotOptimize(MATestVariables(reference, reference).data());
    Report(state, kVariables);
}
BENCHMARK_CAPTURE(Tests, continuous, false);
BENCHMARK_CAPTURE(Tests, categorical, true);

// Takes everything and keeps nothing, so that only the export is measured.
class Sink : public std::streambuf {
protected:
    std::streamsize xsputn(const char* /*text*/, std::streamsize count) override { return count; }
    int overflow(int character) override { return character; }
};

void Export(benchmark::State& state, bool categorical) {
    constexpr int kVariables = 1000;
    const MADistStats summary = SummaryOf(ListOf(kVariables, categorical));
    Sink sink;
    std::ostream out(&sink);
    for (auto _ : state) benchmark::DoNotOptimize(summary.ExportAsXML(nullptr, out).IsOK());
    Report(state, kVariables);
}
BENCHMARK_CAPTURE(Export, continuous, false);
BENCHMARK_CAPTURE(Export, categorical, true);

void Load(benchmark::State& state) {
    const auto count = static_cast<int>(state.range(0));
    const MCVarList list = ListOf(count, true);
    const std::vector<double> frequencies(kCategories, 2.0);
    std::vector<MCUniStats> stored;
    for (int i = 0; i < count; ++i) {
        stored.emplace_back(list.GetVarAt(i)->GetName(), 24.0, frequencies);
    }
    MADistStatsImp summary(list, nullptr);
    for (auto _ : state) {
        for (const MCUniStats& stats : stored) benchmark::DoNotOptimize(summary.SetAllStats(stats));
    }
    Report(state, count);
}
BENCHMARK(Load)->Arg(1000)->Arg(100000);

}  // namespace

BENCHMARK_MAIN();
