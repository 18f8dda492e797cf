#pragma once

#include "Fuzzing.h"
#include "accredit/diststats/MADistStats.h"

namespace fuzz {

/// All numbers of one slot of a summary.
struct Slot {
    template <class Summary>
    Slot(const Summary& summary, unsigned int slot)
        : frequencies(summary.GetFrequencies(slot)),
          cutPoints(summary.GetCutPoints(slot)),
          count(summary.GetNumberOfCases(slot)) {
        summary.GetMinMax(slot, min, max);
        summary.GetMeanStdDev(slot, mean, stdDev);
    }

    bool SameBins(const Slot& other) const {
        return Same(frequencies, other.frequencies) && Same(cutPoints, other.cutPoints);
    }
    bool SameSummary(const Slot& other) const {
        return count == other.count && Same(min, other.min) && Same(max, other.max) &&
               Same(mean, other.mean) && Same(stdDev, other.stdDev);
    }
    bool operator==(const Slot& other) const { return SameBins(other) && SameSummary(other); }

    std::vector<double> frequencies;
    std::vector<double> cutPoints;
    unsigned long count;
    double min = 0.0;
    double max = 0.0;
    double mean = 0.0;
    double stdDev = 0.0;
};

/// The slots of a summary and two that do not exist.
template <class Summary>
std::vector<Slot> SlotsOf(const Summary& summary) {
    std::vector<Slot> slots;
    for (unsigned int slot = 0; slot < summary.GetVarCount(); ++slot) {
        slots.emplace_back(summary, slot);
    }
    slots.emplace_back(summary, summary.GetVarCount());
    slots.emplace_back(summary, ~0U);
    return slots;
}

}  // namespace fuzz
