#include "app/commands/Show.h"

#include <cstddef>
#include <nlohmann/json.hpp>
#include <sstream>

#include "accredit/host/IMCEncoder.h"
#include "accredit/host/MCMV.h"
#include "app/base/Printable.h"

using MCMTD_NAMESPACE::IMCEncoder;

namespace app {

namespace {

using Json = nlohmann::ordered_json;

Json NumberOrNull(double number) { return MCMV::IsMissing(number) ? Json() : Json(number); }

Json CategoriesJson(const IMCEncoder& encoder, const std::vector<double>& frequencies) {
    const bool numbers = encoder.GetValueType() == IMCEncoder::ValueTypeNumber;
    Json categories = Json::array();
    for (std::size_t c = 0; c < frequencies.size(); ++c) {
        const int code = static_cast<int>(c);
        categories.push_back({{"value", numbers ? Json(encoder.DecodeNumber(code))
                                                : Json(encoder.DecodeString(code))},
                              {"frequency", frequencies[c]}});
    }
    return categories;
}

std::string VariableName(const MADistStats& stats, unsigned int slot) {
    return stats.GetVarList().GetVarAt(stats.GetVarListIndex(slot))->GetName();
}

Json VariableJson(const StoredReference& reference, unsigned int slot) {
    const MADistStats& stats = reference.stats;
    const int position = stats.GetVarListIndex(slot);
    const bool categorical = stats.IsCategorical(slot);
    Json variable = {{"name", VariableName(stats, slot)},
                     {"kind", categorical ? "categorical" : "continuous"},
                     {"cases", stats.GetNumberOfCases(slot)},
                     {"missing", reference.missingCounts[slot]}};
    if (categorical) {
        variable["categories"] =
            CategoriesJson(*stats.GetVarList().GetEncoderAt(position), stats.GetFrequencies(slot));
        return variable;
    }
    double first = MCMV::Missing();
    double second = MCMV::Missing();
    stats.GetMinMax(slot, first, second);
    variable["minimum"] = NumberOrNull(first);
    variable["maximum"] = NumberOrNull(second);
    stats.GetMeanStdDev(slot, first, second);
    variable["mean"] = NumberOrNull(first);
    variable["standard_deviation"] = NumberOrNull(second);
    variable["cut_points"] = stats.GetCutPoints(slot);
    variable["frequencies"] = stats.GetFrequencies(slot);
    return variable;
}

}  // namespace

std::string TextListing(const StoredReference& reference, const std::string& title) {
    std::ostringstream out;
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
        shown += listing.substr(at, place - at) + Printable(name);
        at = place + name.size();
    }
    return shown + listing.substr(at);
}

std::string JsonListing(const StoredReference& reference) {
    Json variables = Json::array();
    for (unsigned int slot = 0; slot < reference.stats.GetVarCount(); ++slot) {
        variables.push_back(VariableJson(reference, slot));
    }
    const Json document = {{"schema", 1},
                           {"application", reference.application.name},
                           {"version", reference.application.version},
                           {"timestamp", reference.application.timestamp},
                           {"missing", reference.missing.Texts()},
                           {"variables", std::move(variables)}};
    return document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace app
