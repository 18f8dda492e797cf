#include "app/commands/Show.h"

#include <cstddef>
#include <ios>
#include <sstream>

#include "accredit/diststats/MAUniStats.h"
#include "accredit/host/IMCEncoder.h"
#include "accredit/host/MCMV.h"
#include "accredit/host/MCSummaryStatistics.h"
#include "app/base/JsonWriter.h"
#include "app/base/Printable.h"

using MADocuments::Reference;
using MCMTD_NAMESPACE::IMCEncoder;
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

void WriteCategories(JsonWriter& json, const IMCEncoder& encoder,
                     const std::vector<double>& frequencies) {
    const bool numbers = encoder.GetValueType() == IMCEncoder::ValueTypeNumber;
    json.Key("categories");
    json.BeginArray();
    for (std::size_t c = 0; c < frequencies.size(); ++c) {
        const int code = static_cast<int>(c);
        json.BeginObject();
        json.Key("value");
        numbers ? json.Number(encoder.DecodeNumber(code)) : json.String(encoder.DecodeString(code));
        json.Key("frequency");
        json.Number(frequencies[c]);
        json.EndObject();
    }
    json.EndArray();
}

std::string VariableName(const MADistStats& stats, unsigned int slot) {
    return stats.GetVarList().GetVarAt(stats.GetVarListIndex(slot))->GetName();
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
    const std::optional<std::uint64_t> missing = reference.uncounted[slot].missing;
    missing ? json.Number(*missing) : json.Null();
    if (categorical) {
        WriteCategories(json, *stats.GetVarList().GetEncoderAt(stats.GetVarListIndex(slot)),
                        stats.GetFrequencies(slot));
    } else {
        const MCUniStats variable = MAUniStatsOf(stats, slot);
        for (const MCSummaryStatistic& statistic : kMCSummaryStatistics) {
            json.Key(statistic.label);
            WriteNumber(json, variable.GetSummStats().*statistic.value);
        }
        WriteNumbers(json, "cut_points", stats.GetCutPoints(slot));
        WriteNumbers(json, "frequencies", stats.GetFrequencies(slot));
    }
    json.EndObject();
}

}  // namespace

std::string TextListing(const Reference& reference, const std::string& title) {
    std::ostringstream out;
    out.exceptions(std::ios::badbit);  // Memory that runs out is no listing that is cut off.
    reference.stats.Display(Printable(title), out);
    const std::string listing = out.str();
    // A name may hold line ends, and would then look like other lines of the listing. Whatever
    // stands before the next label is title or numbers.
    const std::string label = "\nVariable name: ";
    std::string shown;
    std::size_t at = 0;
    for (unsigned int slot = 0; slot < reference.stats.GetVarCount(); ++slot) {
        const std::string name = VariableName(reference.stats, slot);
        const std::size_t place = listing.find(label, at) + label.size();
        shown += listing.substr(at, place - at) + ShownName(name, slot + 1);
        at = place + name.size();
    }
    return shown + listing.substr(at);
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
