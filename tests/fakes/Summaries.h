#pragma once

#include <string>
#include <vector>

#include "accredit/diststats/MADistStats.h"
#include "fakes/Fakes.h"

namespace fakes {

/// The summary of these records.
inline MADistStats Summary(const MCMTD_NAMESPACE::MCVarList& list,
                           const std::vector<Numbers>& records,
                           const std::vector<Numbers>& cutPoints = {}) {
    RecordSource source(records);
    return MADistStats(new MADistStatsImp(list, source, cutPoints, nullptr));
}

/// A list with loaded statistics, which have slashes between them.
inline MADistStatsImp Loaded(const std::string& list, const std::string& statistics) {
    MADistStatsImp stats(List(list), nullptr);
    for (const std::string& each : Split(statistics, '/')) {
        if (!stats.SetAllStats(UniStats(each))) Refuse(each, "was not loaded");
    }
    return stats;
}

/// All that a slot holds: "cases; min max mean deviation; cut points; frequencies".
template <class Stats>
std::string Contents(const Stats& stats, unsigned int slot) {
    Numbers summary(4);
    stats.GetMinMax(slot, summary[0], summary[1]);
    stats.GetMeanStdDev(slot, summary[2], summary[3]);
    return Trimmed(std::to_string(stats.GetNumberOfCases(slot)) + "; " + ToText(summary) + "; " +
                   ToText(stats.GetCutPoints(slot)) + "; " + ToText(stats.GetFrequencies(slot)));
}

/// The contents of all slots with a slash between them.
template <class Stats>
std::string Contents(const Stats& stats) {
    std::string all;
    for (unsigned int slot = 0; slot < stats.GetVarCount(); ++slot) {
        all += (slot == 0 ? "" : " / ") + Contents(stats, slot);
    }
    return all;
}

}  // namespace fakes
