// A reference as a document: what the library writes, and the missing data.

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <pugixml.hpp>
#include <sstream>

#include "accredit/documents/StoredReference.h"
#include "accredit/documents/XmlScan.h"
#include "accredit/host/IMCEncoder.h"
#include "app/base/Errors.h"
#include "app/base/Printable.h"

using MCMTD_NAMESPACE::IMCEncoder;
using MCMTD_NAMESPACE::MCVarList;

namespace app {

namespace {

constexpr const char* kNotText = "with control characters or bytes that are not UTF-8";

bool HasUsableNumbers(const MADistStats& stats, unsigned int slot) {
    std::array<double, 4> numbers{};
    stats.GetMinMax(slot, numbers[0], numbers[1]);
    stats.GetMeanStdDev(slot, numbers[2], numbers[3]);
    const std::vector<double>& cuts = stats.GetCutPoints(slot);
    const auto isFinite = [](double number) { return std::isfinite(number); };
    return std::all_of(numbers.begin(), numbers.end(), isFinite) &&
           std::all_of(cuts.begin(), cuts.end(), isFinite) &&
           std::adjacent_find(cuts.begin(), cuts.end(), std::greater_equal<>()) == cuts.end();
}

// Why the library could not write the summary, which it does not say.
std::string Explanation(const MADistStats& stats) {
    const MCVarList& list = stats.GetVarList();
    for (unsigned int slot = 0; slot < stats.GetVarCount(); ++slot) {
        const int position = stats.GetVarListIndex(slot);
        const std::string name = list.GetVarAt(position)->GetName();
        const std::string column = fmt::format("the column \"{}\"", Printable(name));
        if (!IsXmlText(name)) return fmt::format("{}: its heading is a text {}", column, kNotText);
        if (!HasUsableNumbers(stats, slot)) {
            return column +
                   ": its values vary too much, or too little for their size, to be put "
                   "into bins; --ignore leaves it out";
        }
        const IMCEncoder& encoder = *list.GetEncoderAt(position);
        for (int code = 0; code < encoder.GetNumCategories(); ++code) {
            const std::string category = encoder.DecodeString(code);
            if (!IsXmlText(category)) {
                return fmt::format("{}: the category \"{}\" is a text {}", column,
                                   Printable(category), kNotText);
            }
        }
    }
    return "this summary";
}

std::string ExportedBy(const StoredReference& reference, const std::string& dataName) {
    std::ostringstream out;
    const MCCommon::MCStatus status = reference.stats.ExportAsXML(&reference.application, out);
    if (status.GetCode() == MAStatusCancelled) throw Cancelled();
    if (!status.IsOK()) {
        throw InputError(dataName + ": a PMML document cannot hold " +
                         Explanation(reference.stats));
    }
    return out.str();
}

void AddMissingTokens(pugi::xml_node dictionary, const std::vector<std::string>& tokens) {
    for (pugi::xml_node field : dictionary.children("DataField")) {
        for (const std::string& token : tokens) {
            pugi::xml_node value = field.append_child("Value");
            value.append_attribute("value") = token.c_str();
            value.append_attribute("property") = "missing";
        }
    }
}

void AddMissingCounts(pugi::xml_node modelStats, const StoredReference& reference) {
    unsigned int slot = 0;
    for (pugi::xml_node variable : modelStats.children("UnivariateStats")) {
        const std::uint64_t missing = reference.missingCounts[slot];
        pugi::xml_node counts = variable.child("Counts");
        counts.attribute("totalFreq") =
            std::to_string(reference.stats.GetNumberOfCases(slot) + missing).c_str();
        counts.append_attribute("missingFreq") = std::to_string(missing).c_str();
        ++slot;
    }
}

}  // namespace

std::string WriteReference(const StoredReference& reference, const std::string& dataName) {
    const std::vector<std::string> tokens = reference.missing.Texts();
    for (const std::string& token : tokens) {
        if (!IsXmlText(token)) {
            throw UsageError(
                fmt::format("a PMML document cannot hold the missing token \"{}\", "
                            "a text {}",
                            Printable(token), kNotText));
        }
    }
    const std::string exported = ExportedBy(reference, dataName);
    pugi::xml_document document;
    document.load_buffer(
        exported.data(), exported.size(),
        pugi::parse_default | pugi::parse_declaration | pugi::parse_ws_pcdata_single);
    const pugi::xml_node root = document.child("PMML");
    AddMissingTokens(root.child("DataDictionary"), tokens);
    AddMissingCounts(root.child("Extension").child("ModelStats"), reference);
    std::ostringstream out;
    document.save(out, "  ", pugi::format_default, pugi::encoding_utf8);
    return out.str();
}

}  // namespace app
