// The summary as a PMML document.

#include <cstddef>
#include <memory>
#include <utility>

#include "accredit/diststats/MADistStatsImp.h"
#include "accredit/host/ExportFormat.h"
#include "accredit/host/MCPMMLExporter.h"
#include "accredit/host/XMLElement.h"
#include "accredit/host/internal/PMMLVocabulary.h"

using MCCommon::MCStatus;
using MCMTD_NAMESPACE::MCUniStats;
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

// The margins of the bins: the cut points between two open ends.
std::vector<double> MarginsOf(const std::vector<double>& cutPoints) {
    std::vector<double> margins;
    if (cutPoints.empty()) return margins;
    margins.reserve(cutPoints.size() + 2);
    margins.push_back(MCMV::Missing());
    margins.insert(margins.end(), cutPoints.begin(), cutPoints.end());
    margins.push_back(MCMV::Missing());
    return margins;
}

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

    for (std::size_t slot = 0; slot < mVarIndex.size(); ++slot) {
        if (mQueryCancel && mQueryCancel->QueryCancel()) return {MAStatusCancelled, false};
        const std::string name = mVarList.GetVarAt(mVarIndex[slot])->GetName();
        const VarSummary& summary = mSummaries[slot];
        const auto cases = static_cast<double>(summary.count);
        MCUniStats stats;
        if (mCategorical[slot] != 0) {
            stats = MCUniStats(name, cases, mFrequencies[slot]);
        } else {
            MCUniStats::SummStats summStats;
            summStats.min = summary.min;
            summStats.max = summary.max;
            summStats.mean = summary.mean;
            summStats.stdDev = summary.stdDev;
            stats =
                MCUniStats(name, cases, summStats, MarginsOf(mCutPoints[slot]), mFrequencies[slot]);
        }
        StepResult child;
        const MCStatus status = exporter.ExportUniStats(stats, child.Argument());
        if (!status.IsOK()) return status;
        modelStats->AddElement(child.Release());
    }
    extension.Argument()->AddElement(modelStats.release());
    element = extension.Release();
    return {};
}
