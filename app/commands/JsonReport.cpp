#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "accredit/diststats/MADistStats.h"
#include "accredit/host/MCMV.h"
#include "app/base/JsonWriter.h"
#include "app/commands/Cells.h"
#include "app/commands/Report.h"

using MADocuments::UncountedData;

namespace app {

namespace {

constexpr double kExactLimit = 9007199254740992.0;

void Write(JsonWriter& json, const char* key, const std::optional<double>& number) {
    json.Key(key);
    json.Number(number);
}

// Counts are whole but for those that an application stored as it liked.
void WriteCount(JsonWriter& json, const char* key, double count) {
    json.Key(key);
    if (count >= 0.0 && count < kExactLimit && count == std::floor(count)) {
        json.Number(static_cast<std::uint64_t>(count));
    } else {
        json.Number(count);
    }
}

void WriteCount(JsonWriter& json, const char* key, std::optional<std::uint64_t> count) {
    json.Key(key);
    count ? json.Number(*count) : json.Null();
}

void WriteText(JsonWriter& json, const char* key, const std::string& text) {
    json.Key(key);
    text.empty() ? json.Null() : json.String(text);
}

void WriteStatus(JsonWriter& json, const MCCommon::MCStatus& status) {
    json.Key("status");
    json.BeginObject();
    json.Key("code");
    json.Number(static_cast<int>(status.GetCode()));
    json.Key("text");
    json.String(status.GetMessage());
    json.EndObject();
}

// The test of one table, and the size of the change over its cells.
void WriteChange(JsonWriter& json, const MAChange& change) {
    json.Key("two_sample");
    if (change.test) {
        json.BeginObject();
        Write(json, "statistic", change.test->statistic);
        WriteCount(json, "degrees_of_freedom", change.test->degreesOfFreedom);
        Write(json, "p_value", change.test->pValue);
        Write(json, "adjusted_p_value", change.adjustedPValue);
        json.Key("cells");
        json.Number(change.test->cells);
        json.Key("pooled_cells");
        json.Number(change.test->pooledCells);
        json.EndObject();
    } else {
        json.Null();
    }
    Write(json, "share_moved", change.shareMoved);
    json.Key("stability_index");
    change.test ? json.Number(change.test->stabilityIndex) : json.Null();
}

void WriteName(JsonWriter& json, const CheckedVariable& variable, const Cell& cell) {
    if (!variable.categorical) {
        Write(json, "lower", cell.lower);
        Write(json, "upper", cell.upper);
        return;
    }
    json.Key("value");
    if (cell.isOthers) {
        json.Null();
    } else {
        cell.isNumber ? json.Number(cell.number) : json.String(cell.text);
    }
}

void WriteCells(JsonWriter& json, const CheckResult& result, std::size_t i) {
    const CheckedVariable& variable = result.variables[i];
    json.Key(variable.categorical ? "categories" : "bins");
    json.BeginArray();
    for (std::size_t c = 0; c < variable.comparison.cells.reference.size(); ++c) {
        const Cell cell = CellAt(result, i, c);
        json.BeginObject();
        WriteName(json, variable, cell);
        WriteCount(json, "reference_count", cell.referenceCount);
        WriteCount(json, "new_count", cell.newCount);
        json.EndObject();
    }
    json.EndArray();
}

void WriteMostChanged(JsonWriter& json, const CheckResult& result, std::size_t i) {
    const CheckedVariable& variable = result.variables[i];
    const int most = variable.comparison.mostChanged;
    json.Key("most_changed");
    if (most < 0) {
        json.Null();
        return;
    }
    const Cell cell = CellAt(result, i, static_cast<std::size_t>(most));
    const Shares shares = SharesOf(variable, static_cast<std::size_t>(most));
    json.BeginObject();
    WriteName(json, variable, cell);
    Write(json, "reference_share", shares.reference);
    Write(json, "new_share", shares.observed);
    json.EndObject();
}

void WriteUncounted(JsonWriter& json, const char* key, const MAUncountedChange& change,
                    std::optional<std::uint64_t> referenceCount,
                    std::optional<std::uint64_t> newCount) {
    json.Key(key);
    json.BeginObject();
    WriteCount(json, "reference_count", referenceCount);
    WriteCount(json, "new_count", newCount);
    Write(json, "reference_share", change.referenceShare);
    Write(json, "new_share", change.newShare);
    WriteChange(json, change);
}

void WriteUnreadable(JsonWriter& json, const CheckedVariable& variable) {
    const UncountedData& data = variable.newUncounted;
    WriteUncounted(json, "unreadable", variable.comparison.unreadable,
                   variable.referenceUncounted.unreadable, data.unreadable);
    WriteCount(json, "count", data.unreadable);
    json.Key("first_line");
    data.firstUnreadableLine > 0 ? json.Number(data.firstUnreadableLine) : json.Null();
    WriteText(json, "first_text", data.firstUnreadableText);
    json.EndObject();
}

// The most frequent categories of one side only, with their counts there.
void WriteOneSided(JsonWriter& json, const char* key, const CheckResult& result, std::size_t i,
                   const OneSided& categories, double Cell::*count) {
    json.Key(key);
    if (!result.variables[i].categorical) {
        json.Null();
        return;
    }
    std::vector<std::size_t> indexes = categories.named;
    if (categories.others >= 0) indexes.push_back(static_cast<std::size_t>(categories.others));
    json.BeginArray();
    for (const std::size_t index : indexes) {
        const Cell cell = CellAt(result, i, index);
        json.BeginObject();
        WriteName(json, result.variables[i], cell);
        WriteCount(json, "count", cell.*count);
        json.EndObject();
    }
    json.EndArray();
}

// Mean and deviation of one sample; nothing of a variable that it does not have.
void WriteMoments(JsonWriter& json, const std::string& sample, const MADistStats& stats, int slot) {
    double mean = MCMV::Missing();
    double deviation = MCMV::Missing();
    if (slot >= 0) stats.GetMeanStdDev(static_cast<unsigned int>(slot), mean, deviation);
    for (const auto& [name, value] :
         {std::make_pair("_mean", mean), std::make_pair("_standard_deviation", deviation)}) {
        json.Key(sample + name);
        MCMV::IsMissing(value) ? json.Null() : json.Number(value);
    }
}

void WriteVariable(JsonWriter& json, const CheckResult& result, std::size_t i) {
    const CheckedVariable& variable = result.variables[i];
    const MAVariableComparison& comparison = variable.comparison;
    json.BeginObject();
    json.Key("name");
    json.String(variable.name);
    json.Key("kind");
    json.String(variable.categorical ? "categorical" : "continuous");
    json.Key("verdict");
    json.String(VerdictText(comparison.verdict));
    WriteText(json, "reason", variable.reason);
    json.Key("reference_cases");
    json.Number(variable.referenceCases);
    json.Key("new_cases");
    json.Number(variable.newCases);
    Write(json, "p_value", variable.pValue);
    Write(json, "statistic", variable.statistic);
    json.Key("degrees_of_freedom");
    variable.degreesOfFreedom ? json.Number(static_cast<std::uint64_t>(*variable.degreesOfFreedom))
                              : json.Null();
    WriteStatus(json, variable.status);
    Write(json, "weight", variable.weight);
    WriteChange(json, comparison.values);
    WriteMostChanged(json, result, i);
    WriteMoments(json, "reference", result.reference->stats, static_cast<int>(i));
    WriteMoments(json, "new", result.newSummary.stats, comparison.result.newSlot);
    Write(json, "mean_shift", comparison.meanShift);
    Write(json, "deviation_ratio", comparison.deviationRatio);
    json.Key("crowded_bin_share");
    comparison.crowdedBin ? json.Number(comparison.crowdedBin->share) : json.Null();
    WriteUncounted(json, "missing", comparison.missing, variable.referenceUncounted.missing,
                   variable.newUncounted.missing);
    json.EndObject();
    WriteUnreadable(json, variable);
    WriteOneSided(json, "unknown_categories", result, i, UnknownCategories(result, i),
                  &Cell::newCount);
    WriteOneSided(json, "vanished_categories", result, i, VanishedCategories(result, i),
                  &Cell::referenceCount);
    WriteCells(json, result, i);
    json.EndObject();
}

void WriteResult(JsonWriter& json, const CheckResult& result, const CheckOptions& options) {
    Write(json, "accreditation", result.accreditation);
    Write(json, "expected_if_unchanged", result.expectedAccreditation);
    WriteStatus(json, result.status);
    Write(json, "alpha", options.alpha);
    json.Key("failed_rules");
    json.BeginArray();
    for (const std::string& rule : FailedRules(result, options.rules)) json.String(rule);
    json.EndArray();
    json.Key("variables");
    json.BeginArray();
    for (std::size_t i = 0; i < result.variables.size(); ++i) WriteVariable(json, result, i);
    json.EndArray();
}

}  // namespace

std::string JsonReport(const std::vector<CheckResult>& results, const CheckOptions& options) {
    JsonWriter json;
    json.BeginObject();
    json.Key("schema");
    json.Number(2);
    if (results.size() == 1) {
        WriteResult(json, results.front(), options);
    } else {
        json.Key("checks");
        json.BeginArray();
        for (std::size_t i = 0; i < results.size(); ++i) {
            json.BeginObject();
            json.Key("file");
            json.String(options.newPaths[i]);
            WriteResult(json, results[i], options);
            json.EndObject();
        }
        json.EndArray();
    }
    json.EndObject();
    return json.Text() + "\n";
}

}  // namespace app
