// A reference as a document: what the library writes, with the missing tokens and counts.

#include <ios>
#include <memory>
#include <sstream>

#include "accredit/diststats/MAUniStats.h"
#include "accredit/documents/Reference.h"
#include "accredit/host/ExportFormat.h"
#include "accredit/host/MCPMMLExporter.h"
#include "accredit/host/XMLElement.h"

using MCCommon::MCStatus;
using MCMTD_NAMESPACE::MCUniStats;
using MCXML_NAMESPACE::ExportFormat;
using MCXML_NAMESPACE::XMLElement;

namespace MADocuments {

namespace {

using ElementPtr = std::unique_ptr<XMLElement>;

// Runs a step of the exporter and gives the element that it made.
template <class Step>
ElementPtr Made(Step step) {
    XMLElement* element = nullptr;
    const MCStatus status = step(element);
    ElementPtr made(element);
    if (!status.IsOK() || !made) throw DocumentError("a document cannot hold this reference");
    return made;
}

}  // namespace

std::string WriteReference(const Reference& reference) {
    const MADistStats& stats = reference.stats;
    std::vector<int> positions;
    for (unsigned int slot = 0; slot < stats.GetVarCount(); ++slot) {
        positions.push_back(stats.GetVarListIndex(slot));
    }
    MCPMMLExporter exporter(nullptr);
    exporter.SetMissingValues(reference.missing.Texts());
    const ElementPtr root(exporter.ExportPMMLElement());
    ElementPtr header = Made([&](XMLElement*& element) {
        return exporter.ExportHeader(&reference.application, "", true, element);
    });
    root->AddElement(header.release());
    ElementPtr dictionary = Made([&](XMLElement*& element) {
        return exporter.ExportDataDictionary(stats.GetVarList(), positions, element);
    });
    root->AddElement(dictionary.release());

    ElementPtr extension = Made([&](XMLElement*& element) {
        exporter.ExportExtension("containerModel", "", element);
        return MCStatus();
    });
    ElementPtr modelStats(XMLElement::Create("ModelStats"));
    for (unsigned int slot = 0; slot < stats.GetVarCount(); ++slot) {
        MCUniStats variable = MAUniStatsOf(stats, slot);
        variable.SetMissing(static_cast<double>(reference.missingCounts[slot]));
        ElementPtr child =
            Made([&](XMLElement*& element) { return exporter.ExportUniStats(variable, element); });
        modelStats->AddElement(child.release());
    }
    extension->AddElement(modelStats.release());
    root->AddElement(extension.release());

    std::ostringstream out;
    out.exceptions(std::ios::badbit);  // Memory that runs out is no document that is cut off.
    root->WriteTo(out, ExportFormat(), 0);
    return out.str();
}

}  // namespace MADocuments
