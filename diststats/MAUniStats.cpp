#include "accredit/diststats/MAUniStats.h"

#include <string>
#include <vector>

#include "accredit/host/MCMV.h"

using MCMTD_NAMESPACE::IMCVariable;
using MCMTD_NAMESPACE::MCUniStats;

namespace {

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

template <class Stats>
MCUniStats UniStatsOf(const Stats& stats, unsigned int slot) {
    const IMCVariable* variable = stats.GetVarList().GetVarAt(stats.GetVarListIndex(slot));
    if (!variable) return {};
    const std::string name = variable->GetName();
    const auto cases = static_cast<double>(stats.GetNumberOfCases(slot));
    if (stats.IsCategorical(slot)) return {name, cases, stats.GetFrequencies(slot)};
    MCUniStats::SummStats summStats;
    stats.GetMinMax(slot, summStats.min, summStats.max);
    stats.GetMeanStdDev(slot, summStats.mean, summStats.stdDev);
    return {name, cases, summStats, MarginsOf(stats.GetCutPoints(slot)),
            stats.GetFrequencies(slot)};
}

}  // namespace

MCUniStats MAUniStatsOf(const MADistStatsImp& stats, unsigned int slot) {
    return UniStatsOf(stats, slot);
}

MCUniStats MAUniStatsOf(const MADistStats& stats, unsigned int slot) {
    return UniStatsOf(stats, slot);
}
