#include "accredit/documents/Comparison.h"

#include <cstddef>
#include <optional>

#include "accredit/accreditation/MAAccreditor.h"
#include "accredit/documents/NumberText.h"

using MCMTD_NAMESPACE::IMCEncoder;

namespace MADocuments {

namespace {

std::vector<MAUncountedData> Counts(const Reference& summary) {
    std::vector<MAUncountedData> counts;
    for (const UncountedData& data : summary.uncounted) {
        counts.push_back({data.missing, data.unreadable});
    }
    return counts;
}

}  // namespace

std::vector<MAVariableComparison> Compare(const Reference& reference, const Reference& summary,
                                          double alpha) {
    return MACompareVariables(reference.stats, summary.stats, Counts(reference), Counts(summary),
                              alpha);
}

std::vector<UnknownCategory> UnknownCategories(const Reference& reference, const Reference& summary,
                                               unsigned int slot) {
    if (slot >= reference.stats.GetVarCount() || !reference.stats.IsCategorical(slot)) return {};
    const MCMTD_NAMESPACE::MCVarList& list = summary.stats.GetVarList();
    std::vector<int> partners;
    MAAccreditor::MatchVariables(reference.stats.GetVarList(), list, partners);
    if (partners[slot] < 0) return {};
    const auto newSlot = static_cast<unsigned int>(partners[slot]);
    const std::optional<MACells> cells = MACellsOf(reference.stats, slot, summary.stats, newSlot);
    if (!cells) return {};
    const IMCEncoder& encoder = *list.GetEncoderAt(summary.stats.GetVarListIndex(newSlot));
    const int others = UncountedAt(summary, newSlot).otherCategories;
    std::vector<UnknownCategory> unknown;
    // Behind the reference's categories stand those that only the new summary has.
    for (std::size_t cell = reference.stats.GetFrequencies(slot).size();
         cell < cells->observed.size(); ++cell) {
        const int code = cells->newCodes[cell];
        if (!(cells->observed[cell] > 0.0)) continue;
        UnknownCategory category;
        category.cases = cells->observed[cell];
        category.isNamed = code != others && code < encoder.GetNumCategories();
        if (category.isNamed) {
            category.text = encoder.GetValueType() == IMCEncoder::ValueTypeNumber
                                ? SpellNumber(encoder.DecodeNumber(code))
                                : encoder.DecodeString(code);
        }
        unknown.push_back(category);
    }
    return unknown;
}

}  // namespace MADocuments
