// The summary as a PMML document.

#include <memory>
#include <utility>

#include "accredit/diststats/MADistStatsImp.h"
#include "accredit/diststats/MAUniStats.h"
#include "accredit/host/ExportFormat.h"
#include "accredit/host/MCPMMLExporter.h"
#include "accredit/host/XMLElement.h"
#include "accredit/host/internal/PMMLVocabulary.h"

using MCCommon::MCStatus;
using MCXML_NAMESPACE::ExportFormat;
using MCXML_NAMESPACE::XMLElement;

namespace {

// Takes what a step of the exporter leaves in its last argument, and destroys it if no parent takes
// it over, also when the step fails or throws.
class StepResult {
public:
    StepResult() = default;
    StepResult(const StepResult&) = delete;
    StepResult& operator=(const StepResult&) = delete;
    ~StepResult() { delete mElement; }

    XMLElement*& Argument() { return mElement; }
    bool IsThere() const { return mElement != nullptr; }
    XMLElement* Release() { return std::exchange(mElement, nullptr); }

private:
    XMLElement* mElement = nullptr;
};

}  // namespace

MCStatus MADistStatsImp::ExportAsXML(const MCApplicInfo4XML* info, std::ostream& out) const {
    MCPMMLExporter exporter(nullptr);
    if (mVarList.Size() == 0 || mFrequencies.empty()) return {MAStatusNoDistStats, false};
    const MCStatus failed(MAStatusExportFailed, false);

    const std::unique_ptr<XMLElement> root(exporter.ExportPMMLElement());
    if (!root) return failed;

    StepResult header;
    MCStatus status = exporter.ExportHeader(info, "", true, header.Argument());
    if (!status.IsOK() || !header.IsThere()) return failed;
    root->AddElement(header.Release());

    StepResult dictionary;
    status = exporter.ExportDataDictionary(mVarList, mVarIndex, dictionary.Argument());
    if (!status.IsOK() || !dictionary.IsThere()) return failed;
    root->AddElement(dictionary.Release());

    StepResult extension;
    status = ExportModelExt(exporter, extension.Argument());
    if (status.IsOK() && extension.IsThere()) {
        root->AddElement(extension.Release());
        root->WriteTo(out, ExportFormat(), 0);
    }
    return status;
}

MCStatus MADistStatsImp::ExportModelExt(MCPMMLExporter& exporter, XMLElement*& element) const {
    element = nullptr;
    StepResult extension;
    exporter.ExportExtension(MCDetail::gContainerModel, "", extension.Argument());
    std::unique_ptr<XMLElement> modelStats(XMLElement::Create(MCDetail::gModelStats));

    for (unsigned int slot = 0; slot < GetVarCount(); ++slot) {
        if (mQueryCancel && mQueryCancel->QueryCancel()) return {MAStatusCancelled, false};
        StepResult child;
        const MCStatus status =
            exporter.ExportUniStats(MAUniStatsOf(*this, slot), child.Argument());
        if (!status.IsOK()) return status;
        modelStats->AddElement(child.Release());
    }
    extension.Argument()->AddElement(modelStats.release());
    element = extension.Release();
    return {};
}
