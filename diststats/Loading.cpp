// Stored statistics taken back in, without any record being read.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

#include "accredit/diststats/MADistStatsImp.h"
#include "accredit/host/internal/StrictlyAscending.h"

using MCMTD_NAMESPACE::IMCVariable;
using MCMTD_NAMESPACE::MCUniStats;

namespace {

bool AreFrequencies(const std::vector<double>& values) {
    return std::all_of(values.begin(), values.end(), [](double value) { return value >= 0.0; });
}

// A number of cases without its fraction as the count of a summary; false if it does not fit. The
// largest count becomes one more as a double, and comes back from there.
bool TakeCaseCount(double cases, unsigned long& count) {
    constexpr unsigned long kMost = std::numeric_limits<unsigned long>::max();
    constexpr auto kMostAsDouble = static_cast<double>(kMost);
    const double whole = std::trunc(cases);
    if (!(whole >= 0.0 && whole <= kMostAsDouble)) return false;
    count = whole == kMostAsDouble ? kMost : static_cast<unsigned long>(whole);
    return true;
}

// The cut points between the margins of an MCUniStats; false if these are malformed.
bool TakeCutPoints(const std::vector<double>& margins, std::vector<double>& cutPoints) {
    cutPoints.clear();
    if (margins.empty()) return true;
    if (margins.size() < 3 || !MCMV::IsMissing(margins.front()) ||
        !MCMV::IsMissing(margins.back())) {
        return false;
    }
    cutPoints.assign(margins.begin() + 1, margins.end() - 1);
    return true;
}

}  // namespace

bool MADistStatsImp::SetFreqs(unsigned int slot, const std::vector<double>& frequencies) {
    if (slot >= GetVarCount() || mCategorical[slot] == 0) return false;
    const int categories = GetVarList().GetVarAt(mVarIndex[slot])->GetNumCategories();
    if (categories < 0 || frequencies.size() != static_cast<std::size_t>(categories) ||
        !AreFrequencies(frequencies)) {
        return false;
    }
    mFrequencies[slot] = frequencies;
    return true;
}

bool MADistStatsImp::SetFreqs(unsigned int slot, const std::vector<double>& frequencies,
                              const std::vector<double>& cutPoints) {
    if (slot >= GetVarCount() || mCategorical[slot] != 0) return false;
    const std::size_t bins = frequencies.size();
    if (bins == 1 || cutPoints.size() != (bins == 0 ? 0 : bins - 1)) return false;
    if (!AreFrequencies(frequencies) ||
        !MCDetail::IsStrictlyAscending(cutPoints.begin(), cutPoints.end())) {
        return false;
    }
    // Both are copied before either is replaced, so that they stay a pair if memory runs out.
    std::vector<double> newFrequencies = frequencies;
    std::vector<double> newCutPoints = cutPoints;
    mFrequencies[slot] = std::move(newFrequencies);
    mCutPoints[slot] = std::move(newCutPoints);
    return true;
}

bool MADistStatsImp::SetSummStats(unsigned int slot, unsigned long count, double min, double max,
                                  double mean, double stdDev) {
    if (slot >= GetVarCount()) return false;
    VarSummary summary;
    summary.count = count;
    summary.mean = MCMV::Missing();
    summary.stdDev = MCMV::Missing();
    if (mCategorical[slot] == 0 && count > 0) {
        if (MCMV::IsMissing(mean)) return false;
        if (count == 1) {
            if (min != max) return false;
        } else {
            if (MCMV::IsMissing(stdDev) || MCMV::IsMissing(min) || MCMV::IsMissing(max) ||
                stdDev < 0.0 || max < min) {
                return false;
            }
            summary.stdDev = stdDev;
        }
        summary.min = min;
        summary.max = max;
        summary.mean = mean;
    }
    mSummaries[slot] = summary;
    return true;
}

bool MADistStatsImp::SetAllStats(const MCUniStats& stats) {
    const int position = mVarList.FindVariable(stats.GetVarName());
    if (position < 0) return false;
    const IMCVariable& variable = *GetVarList().GetVarAt(position);
    if (variable.GetRole() != IMCVariable::VariableRoleInput) return false;
    const bool categorical = MCMTD_NAMESPACE::IsCategoricalLevel(variable.GetMeasureLevel());
    if (categorical != stats.IsCategorical()) return false;

    const auto found = std::lower_bound(mVarIndex.begin(), mVarIndex.end(), position);
    if (found == mVarIndex.end() || *found != position) return false;
    const auto slot = static_cast<unsigned int>(found - mVarIndex.begin());

    unsigned long count = 0;
    if (!TakeCaseCount(stats.GetNumberOfCases(), count)) return false;
    const VarSummary before = mSummaries[slot];
    try {
        if (categorical) {
            const double missing = MCMV::Missing();
            return SetSummStats(slot, count, missing, missing, missing, missing) &&
                   SetFreqs(slot, stats.GetFrequencies());
        }
        const MCUniStats::SummStats& summStats = stats.GetSummStats();
        std::vector<double> cutPoints;
        return stats.AreIntervalsOpenLeft() &&
               SetSummStats(slot, count, summStats.min, summStats.max, summStats.mean,
                            summStats.stdDev) &&
               TakeCutPoints(stats.GetCutPoints(), cutPoints) &&
               SetFreqs(slot, stats.GetFrequencies(), cutPoints);
    } catch (...) {
        mSummaries[slot] = before;
        throw;
    }
}
