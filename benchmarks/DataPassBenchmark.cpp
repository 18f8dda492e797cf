// The data passes, beside one plain pass that only sums the same memory and one over the source
// that does nothing with the records. Every figure is items per second and, as "ns/value", time a
// value.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "accredit/diststats/MADistStatsImp.h"
#include "accredit/host/MCMV.h"
#include "accredit/host/MCStringEncoder.h"
#include "accredit/host/MCTableRecordIter.h"
#include "accredit/host/MCVariable.h"

namespace {

using MCCommon::MCTableRecordIter;
using MCMTD_NAMESPACE::MCStringEncoder;
using MCMTD_NAMESPACE::MCVariable;
using MCMTD_NAMESPACE::MCVarList;

constexpr std::size_t kValues = 1 << 20;
constexpr int kCategories = 12;

struct Table {
    MCVarList list;
    std::vector<double> values;
    int width = 0;
    std::vector<std::vector<double>> cutPoints;
};

Table MakeTable(int continuous, int categorical, bool withMissing) {
    Table table;
    table.width = continuous + categorical;
    std::vector<std::string> categories;
    for (int c = 0; c < kCategories; ++c) categories.push_back("category " + std::to_string(c));
    // Continuous and categorical variables alternate, as they do in real data.
    std::vector<bool> isCategorical;
    for (int i = 0, c = 0; i < table.width; ++i) {
        const bool takeCategorical = (i + 1) * categorical / table.width > c;
        isCategorical.push_back(takeCategorical);
        const std::string name = "v" + std::to_string(i);
        if (takeCategorical) {
            ++c;
            table.list.Add(MCVariable::Categorical(name, kCategories), MCStringEncoder(categories));
            table.cutPoints.emplace_back();
        } else {
            table.list.Add(MCVariable::Continuous(name));
            table.cutPoints.push_back({30.0, 40.0, 50.0, 60.0, 70.0});
        }
    }
    std::mt19937_64 random(1);
    std::normal_distribution<double> normal(50.0, 10.0);
    std::uniform_int_distribution<int> category(0, kCategories - 1);
    std::bernoulli_distribution missing(withMissing ? 0.1 : 0.0);
    const std::size_t records = kValues / static_cast<std::size_t>(table.width);
    for (std::size_t r = 0; r < records; ++r) {
        for (const bool takeCategorical : isCategorical) {
            const double value = takeCategorical ? category(random) : normal(random);
            table.values.push_back(missing(random) ? MCMV::Missing() : value);
        }
    }
    return table;
}

void Report(benchmark::State& state, const Table& table) {
    const auto values = static_cast<std::int64_t>(table.values.size());
    state.SetItemsProcessed(state.iterations() * values);
    state.counters["ns/value"] = benchmark::Counter(
        static_cast<double>(values) * 1e-9,
        benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void PlainSum(benchmark::State& state, int continuous, int categorical, bool withMissing) {
    const Table table = MakeTable(continuous, categorical, withMissing);
    for (auto _ : state) {
        double sum = 0.0;
        for (const double value : table.values) sum += value;
        benchmark::DoNotOptimize(sum);
    }
    Report(state, table);
}

// What a pass cannot do without: asking the source for each record and its first value.
void Records(benchmark::State& state, int continuous, int categorical, bool withMissing) {
    const Table table = MakeTable(continuous, categorical, withMissing);
    MCTableRecordIter source(table.values, table.width);
    MCCommon::MultiPassRecordIter* iter = &source;
    benchmark::DoNotOptimize(iter);
    for (auto _ : state) {
        iter->Rewind();
        while (iter->HasMoreRecords()) benchmark::DoNotOptimize(*iter->GetNextRecord()->GetAll());
    }
    Report(state, table);
}

void DataPass(benchmark::State& state, int continuous, int categorical, bool withMissing,
              bool givenCutPoints) {
    const Table table = MakeTable(continuous, categorical, withMissing);
    MCTableRecordIter iter(table.values, table.width);
    const std::vector<std::vector<double>> none;
    for (auto _ : state) {
        iter.Rewind();
        MADistStatsImp stats(table.list, iter, givenCutPoints ? table.cutPoints : none, nullptr);
        benchmark::DoNotOptimize(stats.GetNumberOfCases(0));
    }
    Report(state, table);
}

struct Case {
    std::string name;
    int continuous;
    int categorical;
    bool withMissing;
};

std::vector<Case> Cases() {
    std::vector<Case> cases;
    for (const Case& shape :
         {Case{"10 continuous", 10, 0, false}, Case{"100 continuous", 100, 0, false},
          Case{"10 categorical", 0, 10, false}, Case{"100 mixed", 50, 50, false}}) {
        for (const bool missing : {false, true}) {
            cases.push_back({shape.name + (missing ? "/missing" : "/complete"), shape.continuous,
                             shape.categorical, missing});
        }
    }
    return cases;
}

void RegisterAll() {
    for (const auto& [name, continuous, categorical, missing] : Cases()) {
        benchmark::RegisterBenchmark(("Sum/" + name).c_str(), PlainSum, continuous, categorical,
                                     missing);
        benchmark::RegisterBenchmark(("Records/" + name).c_str(), Records, continuous, categorical,
                                     missing);
        benchmark::RegisterBenchmark(("GivenCutPoints/" + name).c_str(), DataPass, continuous,
                                     categorical, missing, true);
        benchmark::RegisterBenchmark(("ComputedCutPoints/" + name).c_str(), DataPass, continuous,
                                     categorical, missing, false);
    }
}

// Writes the tables and their summaries into a folder, for others to summarise the same data and
// to compare: of each case the values record by record as doubles, and of each variable a line with
// its kind, cases, minimum, maximum, mean, deviation and frequencies.
void Dump(const std::string& folder) {
    for (const Case& each : Cases()) {
        const Table table = MakeTable(each.continuous, each.categorical, each.withMissing);
        std::string name = each.name;
        std::replace(name.begin(), name.end(), '/', '-');
        std::ofstream(folder + "/" + name + ".doubles", std::ios::binary)
            .write(reinterpret_cast<const char*>(table.values.data()),
                   static_cast<std::streamsize>(table.values.size() * sizeof(double)));
        for (const bool given : {true, false}) {
            MCTableRecordIter iter(table.values, table.width);
            const MADistStatsImp stats(table.list, iter,
                                       given ? table.cutPoints : std::vector<std::vector<double>>(),
                                       nullptr);
            std::ofstream out(folder + "/" + name + (given ? ".given" : ".computed"));
            out.precision(17);
            for (unsigned int slot = 0; slot < stats.GetVarCount(); ++slot) {
                double min = 0.0;
                double max = 0.0;
                double mean = 0.0;
                double deviation = 0.0;
                stats.GetMinMax(slot, min, max);
                stats.GetMeanStdDev(slot, mean, deviation);
                out << stats.IsCategorical(slot) << ' ' << stats.GetNumberOfCases(slot);
                for (const double value : {min, max, mean, deviation}) out << ' ' << value;
                for (const double frequency : stats.GetFrequencies(slot)) out << ' ' << frequency;
                out << '\n';
            }
        }
    }
}

}  // namespace

// data_pass_benchmark --dump=FOLDER writes the data; without it the options are the benchmark's.
int main(int argc, char** argv) {
    const std::string option = "--dump=";
    if (argc == 2 && std::string(argv[1]).rfind(option, 0) == 0) {
        Dump(std::string(argv[1]).substr(option.size()));
        return 0;
    }
    benchmark::Initialize(&argc, argv);
    RegisterAll();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
