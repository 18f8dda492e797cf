// A reference as a document: what the library writes, with the missing tokens and counts.

#include <algorithm>
#include <cstddef>
#include <ios>
#include <memory>
#include <numeric>
#include <set>
#include <sstream>
#include <string_view>

#include "accredit/diststats/MAProblems.h"
#include "accredit/diststats/MAUniStats.h"
#include "accredit/documents/Reference.h"
#include "accredit/documents/internal/Element.h"
#include "accredit/documents/internal/EncoderWithOthers.h"
#include "accredit/host/ExportFormat.h"
#include "accredit/host/MCPMMLExporter.h"
#include "accredit/host/MCVariable.h"
#include "accredit/host/XMLElement.h"

using MCMTD_NAMESPACE::IMCEncoder;
using MCMTD_NAMESPACE::IMCVariable;
using MCMTD_NAMESPACE::MCUniStats;
using MCMTD_NAMESPACE::MCVariable;
using MCMTD_NAMESPACE::MCVarList;
using MCXML_NAMESPACE::ExportFormat;
using MCXML_NAMESPACE::XMLElement;

namespace MADocuments {

namespace {

using ElementPtr = std::unique_ptr<XMLElement>;

constexpr const char* kUnheld = "a text with control characters or bytes that are not UTF-8";

// What of a variable no document holds.
std::string InWords(MAProblemKind kind) {
    switch (kind) {
        case MAProblemKind::Name:
            return std::string("its name is ") + kUnheld;
        case MAProblemKind::RepeatedName:
            return "an earlier one has its name";
        case MAProblemKind::TooManyCategories:
            return "with its categories there are too many";
        case MAProblemKind::Category:
            return std::string("a category is ") + kUnheld + ", or no finite number";
        case MAProblemKind::RepeatedCategory:
            return "a category is there twice";
        case MAProblemKind::SummaryStats:
            return "its minimum, maximum, mean or deviation is no finite number";
        case MAProblemKind::CutPoints:
            return "its cut points are not finite or do not ascend";
        default:
            return "a frequency is no finite number";
    }
}

// Tokens that are categories have been refused before.
[[noreturn]] void RefuseVariables(const Reference& reference) {
    const MAVariableProblem problem = MAFindExportProblem(reference.stats);
    if (problem.slot < 0) {
        throw DocumentError("a PMML document cannot hold this reference",
                            "give it variables with finite counts that fit together");
    }
    const auto slot = static_cast<unsigned int>(problem.slot);
    throw DocumentError("a PMML document cannot hold the variable \"" +
                            Shortened(VariableName(reference.stats, slot)) +
                            "\": " + InWords(problem.kind),
                        "correct that, or leave the variable out");
}

bool IsXmlText(const std::string& text) {
    const ElementPtr element(XMLElement::Create("Value"));
    return element->SetAttribute("value", text);
}

void RequireGoodSources(const std::vector<std::string>& sources) {
    std::set<std::string_view> seen;
    for (const std::string& source : sources) {
        const std::string place = "source " + std::to_string(seen.size() + 1);
        if (source.empty()) throw DocumentError(place + " is empty", "leave it out, or name it");
        if (!IsXmlText(source)) throw DocumentError(place + " is " + kUnheld, "name it otherwise");
        if (!seen.insert(source).second) {
            throw DocumentError(place + " is there twice", "leave one out");
        }
    }
}

ElementPtr Extension(MCPMMLExporter& exporter, const std::string& name, const std::string& value) {
    XMLElement* element = nullptr;
    exporter.ExportExtension(name, value, element);
    return ElementPtr(element);
}

// The input variables with the categories that their fields show: without the one that has no name.
MCVarList FieldsOf(const Reference& reference) {
    const MCVarList& list = reference.stats.GetVarList();
    MCVarList fields;
    for (unsigned int slot = 0; slot < reference.stats.GetVarCount(); ++slot) {
        const int position = reference.stats.GetVarListIndex(slot);
        const IMCVariable& variable = *list.GetVarAt(position);
        const IMCEncoder* const encoder = list.GetEncoderAt(position);
        const int others = UncountedAt(reference, slot).otherCategories;
        std::shared_ptr<IMCEncoder> shown;
        if (encoder) shown = std::make_shared<EncoderWithout>(*encoder, others);
        const int categories = shown ? shown->GetNumCategories() : 0;
        fields.AddShared(
            std::make_shared<MCVariable>(variable.GetName(), variable.GetMeasureLevel(),
                                         IMCVariable::VariableRoleInput, categories),
            shown);
    }
    return fields;
}

// The frequency of the category without a name, which may lie beyond the last that was counted.
double TakeOthers(std::vector<double>& frequencies, int code) {
    const auto index = static_cast<std::size_t>(code);
    if (code < 0 || index >= frequencies.size()) return 0.0;
    const double others = frequencies[index];
    frequencies.erase(frequencies.begin() + code);
    return others;
}

MCUniStats Statistics(const Reference& reference, unsigned int slot) {
    MCUniStats variable = MAUniStatsOf(reference.stats, slot);
    const UncountedData uncounted = UncountedAt(reference, slot);
    if (uncounted.otherCategories >= 0) {
        std::vector<double> frequencies = variable.GetFrequencies();
        TakeOthers(frequencies, uncounted.otherCategories);
        variable = MCUniStats(variable.GetVarName(), variable.GetNumberOfCases(), frequencies);
    }
    if (uncounted.missing) variable.SetMissing(static_cast<double>(*uncounted.missing));
    // None at all is what a document means that does not speak of them.
    if (uncounted.unreadable.value_or(0) > 0) {
        variable.SetInvalid(static_cast<double>(*uncounted.unreadable));
    }
    return variable;
}

// The texts that stand for missing data in every field.
std::vector<std::string> TokensOf(const Reference& reference) {
    if (!reference.namesMissing) return {};
    const int slot = FindMissingCategory(reference.stats, reference.missing);
    if (slot >= 0) {
        const std::string name = VariableName(reference.stats, static_cast<unsigned int>(slot));
        throw DocumentError(
            "the variable \"" + Shortened(name) + "\" has a missing token as a category",
            "name other tokens, or none with namesMissing");
    }
    for (const std::string& token : reference.missing.Texts()) {
        if (IsXmlText(token)) continue;
        throw DocumentError(std::string("a PMML document cannot hold a missing token, ") + kUnheld,
                            "name another");
    }
    return reference.missing.Texts();
}

// What the elements of PMML have no place for; null if there is nothing.
ElementPtr NewDataExtension(MCPMMLExporter& exporter, const Reference& reference) {
    ElementPtr all;
    for (unsigned int slot = 0; slot < reference.stats.GetVarCount(); ++slot) {
        const UncountedData uncounted = UncountedAt(reference, slot);
        if (uncounted.firstUnreadableLine == 0 && uncounted.otherCategories < 0) continue;
        ElementPtr field = Extension(exporter, "field", VariableName(reference.stats, slot));
        if (uncounted.firstUnreadableLine > 0) {
            field->AddElement(Extension(exporter, "firstUnreadableLine",
                                        std::to_string(uncounted.firstUnreadableLine))
                                  .release());
            field->AddElement(
                Extension(exporter, "firstUnreadableText", uncounted.firstUnreadableText)
                    .release());
        }
        if (uncounted.otherCategories >= 0) {
            std::vector<double> frequencies = reference.stats.GetFrequencies(slot);
            const double others = TakeOthers(frequencies, uncounted.otherCategories);
            field->AddElement(Extension(exporter, "otherCategories",
                                        std::to_string(static_cast<std::uint64_t>(others)))
                                  .release());
        }
        if (!all) all = Extension(exporter, "newData", "");
        all->AddElement(field.release());
    }
    return all;
}

// The sources of the data; null if there are none.
ElementPtr SourcesExtension(MCPMMLExporter& exporter, const Reference& reference) {
    if (reference.sources.empty()) return nullptr;
    ElementPtr all = Extension(exporter, "sources", "");
    for (const std::string& source : reference.sources) {
        all->AddElement(Extension(exporter, "source", source).release());
    }
    return all;
}

std::string DocumentOf(const Reference& reference) {
    RequireGoodSources(reference.sources);
    MCPMMLExporter exporter(nullptr);
    exporter.SetMissingValues(TokensOf(reference));
    const ElementPtr root(exporter.ExportPMMLElement());
    XMLElement* header = nullptr;
    if (!exporter.ExportHeader(&reference.application, "", true, header).IsOK()) {
        throw DocumentError(
            std::string("a PMML document cannot hold what is said of the application, ") + kUnheld,
            "name it otherwise");
    }
    root->AddElement(header);
    const MCVarList fields = FieldsOf(reference);
    std::vector<int> positions(fields.Size());
    std::iota(positions.begin(), positions.end(), 0);
    XMLElement* dictionary = nullptr;
    if (!exporter.ExportDataDictionary(fields, positions, dictionary).IsOK()) {
        RefuseVariables(reference);
    }
    root->AddElement(dictionary);

    ElementPtr extension = Extension(exporter, "containerModel", "");
    ElementPtr modelStats(XMLElement::Create("ModelStats"));
    for (unsigned int slot = 0; slot < reference.stats.GetVarCount(); ++slot) {
        XMLElement* variable = nullptr;
        if (!exporter.ExportUniStats(Statistics(reference, slot), variable).IsOK()) {
            RefuseVariables(reference);
        }
        modelStats->AddElement(variable);
    }
    extension->AddElement(modelStats.release());
    root->AddElement(extension.release());
    if (ElementPtr newData = NewDataExtension(exporter, reference))
        root->AddElement(newData.release());
    if (ElementPtr sources = SourcesExtension(exporter, reference))
        root->AddElement(sources.release());

    std::ostringstream out;
    out.exceptions(std::ios::badbit);  // Memory that runs out is no document that is cut off.
    root->WriteTo(out, ExportFormat(), 0);
    return out.str();
}

// What cannot be read again must not be kept.
void RequireReadable(const std::string& document) {
    try {
        ReadReference(document);
    } catch (const DocumentError& error) {
        // The caller does not have the document, so that a place in it says nothing.
        throw DocumentError(error.Problem(),
                            error.Line() == 0 ? error.Remedy() : "correct that in the reference");
    }
}

}  // namespace

std::string VariableName(const MADistStats& stats, unsigned int slot) {
    return stats.GetVarList().GetVarAt(stats.GetVarListIndex(slot))->GetName();
}

UncountedData UncountedAt(const Reference& reference, unsigned int slot) {
    return slot < reference.uncounted.size() ? reference.uncounted[slot] : UncountedData();
}

std::string WriteReference(const Reference& reference) {
    std::string document = DocumentOf(reference);
    RequireReadable(document);
    return document;
}

}  // namespace MADocuments
