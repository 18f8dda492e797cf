#include "app/commands/Show.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <optional>
#include <utility>
#include <vector>

#include "accredit/accreditation/MAComparison.h"
#include "accredit/diststats/MAUniStats.h"
#include "accredit/host/MCMV.h"
#include "accredit/host/MCSummaryStatistics.h"
#include "app/base/Characters.h"
#include "app/base/JsonWriter.h"
#include "app/base/Printable.h"
#include "app/commands/Cells.h"
#include "app/commands/Comparison.h"
#include "app/commands/Words.h"

using MADocuments::Reference;
using MADocuments::UncountedData;
using MADocuments::VariableName;
using MCMTD_NAMESPACE::kMCSummaryStatistics;
using MCMTD_NAMESPACE::MCSummaryStatistic;
using MCMTD_NAMESPACE::MCUniStats;

namespace app {

namespace {

void WriteNumber(JsonWriter& json, double number) {
    MCMV::IsMissing(number) ? json.Null() : json.Number(number);
}

void WriteNumbers(JsonWriter& json, const char* key, const std::vector<double>& numbers) {
    json.Key(key);
    json.BeginArray();
    for (const double number : numbers) json.Number(number);
    json.EndArray();
}

// The category that stands for those that were not kept has no value.
void WriteCategories(JsonWriter& json, const Reference& reference, unsigned int slot) {
    const std::vector<double>& frequencies = reference.stats.GetFrequencies(slot);
    json.Key("categories");
    json.BeginArray();
    for (std::size_t c = 0; c < frequencies.size(); ++c) {
        const Cell category = CategoryAt(reference, slot, static_cast<int>(c));
        json.BeginObject();
        json.Key("value");
        if (category.isOthers) {
            json.Null();
        } else {
            category.isNumber ? json.Number(category.number) : json.String(category.text);
        }
        json.Key("frequency");
        json.Number(frequencies[c]);
        json.EndObject();
    }
    json.EndArray();
}

// Without cases there are none, also where nothing was loaded and the moments are still 0.
MCUniStats::SummStats SummaryOf(const MADistStats& stats, unsigned int slot) {
    return stats.GetNumberOfCases(slot) == 0 ? MCUniStats::SummStats()
                                             : MAUniStatsOf(stats, slot).GetSummStats();
}

void WriteVariable(JsonWriter& json, const Reference& reference, unsigned int slot) {
    const MADistStats& stats = reference.stats;
    const bool categorical = stats.IsCategorical(slot);
    json.BeginObject();
    json.Key("name");
    json.String(VariableName(stats, slot));
    json.Key("kind");
    json.String(categorical ? "categorical" : "continuous");
    json.Key("cases");
    json.Number(std::uint64_t{stats.GetNumberOfCases(slot)});
    json.Key("missing");
    const UncountedData uncounted = UncountedAt(reference, slot);
    uncounted.missing ? json.Number(*uncounted.missing) : json.Null();
    json.Key("unreadable");
    uncounted.unreadable ? json.Number(*uncounted.unreadable) : json.Null();
    if (categorical) {
        WriteCategories(json, reference, slot);
    } else {
        const MCUniStats::SummStats summary = SummaryOf(stats, slot);
        for (const MCSummaryStatistic& statistic : kMCSummaryStatistics) {
            json.Key(statistic.label);
            WriteNumber(json, summary.*statistic.value);
        }
        WriteNumbers(json, "cut_points", stats.GetCutPoints(slot));
        WriteNumbers(json, "frequencies", stats.GetFrequencies(slot));
        json.Key("crowded_bin_share");
        const std::optional<MACrowdedBin> crowded = MAFindCrowdedBin(stats, slot);
        crowded ? json.Number(crowded->share) : json.Null();
    }
    json.EndObject();
}

}  // namespace

namespace {

// So many categories of a variable are listed.
constexpr std::size_t kListed = 20;

std::string Plural(double count, const char* one, const char* many) {
    return fmt::format("{:.0f} {}", count, count == 1.0 ? one : many);
}

// Lines of names and their cases, which are aligned.
std::string Counts(const std::vector<std::pair<std::string, double>>& counts) {
    std::size_t names = 0;
    std::size_t numbers = 0;
    for (const auto& [name, count] : counts) {
        names = std::max(names, DisplayWidth(name));
        numbers = std::max(numbers, fmt::format("{}", count).size());
    }
    std::string lines;
    for (const auto& [name, count] : counts) {
        lines += fmt::format("  {}{}  {:>{}}\n", name, std::string(names - DisplayWidth(name), ' '),
                             fmt::format("{}", count), numbers);
    }
    return lines;
}

std::string CategoryLines(const Reference& reference, unsigned int slot) {
    const std::vector<double>& frequencies = reference.stats.GetFrequencies(slot);
    std::vector<int> order(frequencies.size());
    std::iota(order.begin(), order.end(), 0);
    const auto frequency = [&frequencies](int code) {
        return frequencies[static_cast<std::size_t>(code)];
    };
    std::stable_sort(order.begin(), order.end(), [&frequency](int left, int right) {
        return frequency(left) > frequency(right);
    });
    std::vector<std::pair<std::string, double>> counts;
    double rest = 0.0;
    for (const int code : order) {
        if (counts.size() < kListed) {
            counts.emplace_back(CellName(CategoryAt(reference, slot, code)), frequency(code));
        } else {
            rest += frequency(code);
        }
    }
    std::string lines = Counts(counts);
    if (order.size() > kListed) {
        lines += fmt::format("  and {} more with {}\n", order.size() - kListed,
                             Plural(rest, "case", "cases"));
    }
    return lines;
}

std::string NumberLines(const MADistStats& stats, unsigned int slot) {
    std::string lines;
    const MCUniStats::SummStats summary = SummaryOf(stats, slot);
    for (const MCSummaryStatistic& statistic : kMCSummaryStatistics) {
        const double value = summary.*statistic.value;
        if (MCMV::IsMissing(value)) continue;
        std::string label = statistic.label;
        std::replace(label.begin(), label.end(), '_', ' ');
        lines += fmt::format("{}{} {:.6g}", lines.empty() ? "  " : ", ", label, value);
    }
    if (!lines.empty()) lines += "\n";
    std::vector<std::pair<std::string, double>> counts;
    for (std::size_t bin = 0; bin < stats.GetFrequencies(slot).size(); ++bin) {
        counts.emplace_back(CellName(BinAt(stats.GetCutPoints(slot), bin)),
                            stats.GetFrequencies(slot)[bin]);
    }
    lines += Counts(counts);
    const std::string crowded = CrowdedInWords(stats, slot);
    return crowded.empty() ? lines : lines + fmt::format("  {}\n", crowded);
}

std::string VariableLines(const Reference& reference, unsigned int slot) {
    const MADistStats& stats = reference.stats;
    const UncountedData uncounted = UncountedAt(reference, slot);
    const bool categorical = stats.IsCategorical(slot);
    std::string heading =
        fmt::format("{}: {}, {}", ShownName(VariableName(stats, slot), slot + 1),
                    categorical ? Plural(static_cast<double>(stats.GetFrequencies(slot).size()),
                                         "category", "categories")
                                : "numbers",
                    Plural(static_cast<double>(stats.GetNumberOfCases(slot)), "case", "cases"));
    heading += uncounted.missing ? fmt::format(", {} missing", *uncounted.missing)
                                 : std::string(", missing values not known");
    const std::string unreadable = UnreadableInWords(uncounted);
    if (!unreadable.empty()) heading += "; " + unreadable;
    return heading + "\n" +
           (categorical ? CategoryLines(reference, slot) : NumberLines(stats, slot));
}

}  // namespace

std::string TextListing(const Reference& reference, const std::string& title) {
    const unsigned int variables = reference.stats.GetVarCount();
    std::string listing = fmt::format("{}: {}", title, Plural(variables, "variable", "variables"));
    if (const std::optional<std::uint64_t> rows = RowCount(reference)) {
        listing += fmt::format(", {}", Plural(static_cast<double>(*rows), "row", "rows"));
    }
    const MCApplicInfo4XML& maker = reference.application;
    if (!maker.name.empty()) {
        listing += fmt::format(", made by {}", Printable(maker.name));
        if (!maker.version.empty()) listing += fmt::format(" {}", Printable(maker.version));
    }
    if (!maker.timestamp.empty()) listing += fmt::format(", {}", Printable(maker.timestamp));
    if (reference.sources.size() > 1) {
        listing += fmt::format(", made of {} sources", reference.sources.size());
    }
    listing += reference.namesMissing ? "\nMissing values"
                                      : "\nMissing values (the usual, none are named)";
    listing += ": the empty field";
    for (const std::string& token : reference.missing.Texts()) {
        if (!token.empty()) listing += fmt::format(", {}", Printable(token));
    }
    listing += "\n";
    for (unsigned int slot = 0; slot < variables; ++slot) {
        listing += "\n" + VariableLines(reference, slot);
    }
    return listing;
}

std::string JsonListing(const Reference& reference) {
    JsonWriter json;
    json.BeginObject();
    json.Key("schema");
    json.Number(1);
    json.Key("application");
    json.String(reference.application.name);
    json.Key("version");
    json.String(reference.application.version);
    json.Key("timestamp");
    json.String(reference.application.timestamp);
    json.Key("missing");
    json.BeginArray();
    for (const std::string& token : reference.missing.Texts()) json.String(token);
    json.EndArray();
    json.Key("sources");
    json.BeginArray();
    for (const std::string& source : reference.sources) json.String(source);
    json.EndArray();
    json.Key("variables");
    json.BeginArray();
    for (unsigned int slot = 0; slot < reference.stats.GetVarCount(); ++slot) {
        WriteVariable(json, reference, slot);
    }
    json.EndArray();
    json.EndObject();
    return json.Text() + "\n";
}

}  // namespace app
