// Where the bins of continuous variables come from.

#include <cstddef>

#include "accredit/diststats/MADistStatsImp.h"
#include "accredit/diststats/internal/StrictlyAscending.h"

using MCMTD_NAMESPACE::MCVarList;

bool MADistStatsImp::CutPointsAreValid(const std::vector<int>& varIndex,
                                       const std::vector<std::int16_t>& categorical,
                                       const std::vector<std::vector<double>>& cutPoints) {
    if (cutPoints.size() != varIndex.size()) return cutPoints.empty();
    for (std::size_t slot = 0; slot < cutPoints.size(); ++slot) {
        if (categorical[slot] != 0) continue;
        if (!MADetail::IsStrictlyAscending(cutPoints[slot])) return false;
    }
    return true;
}

void MADistStatsImp::UseExistingCutPoints(const MCVarList& /*varList*/,
                                          const std::vector<std::vector<double>>& cutPoints) {
    if (cutPoints.empty()) return;
    mCutPoints = cutPoints;
    for (std::size_t slot = 0; slot < mCutPoints.size(); ++slot) {
        if (mCategorical[slot] == 0 && !mCutPoints[slot].empty()) {
            mFrequencies[slot].resize(mCutPoints[slot].size() + 1, 0.0);
        }
    }
}

bool MADistStatsImp::ComputeCutPoints(const MCVarList& /*varList*/) {
    mCutPoints.resize(mVarIndex.size());
    bool any = false;
    for (std::size_t slot = 0; slot < mVarIndex.size(); ++slot) {
        if (mCategorical[slot] != 0) continue;
        const double s = mSummaries[slot].stdDev;
        if (MCMV::IsMissing(s) || s == 0.0) continue;
        any = true;
        const double m = mSummaries[slot].mean;
        const double twice = s + s;
        mCutPoints[slot] = {m - twice, m - s, m, m + s, m + twice};
        mFrequencies[slot].resize(mCutPoints[slot].size() + 1, 0.0);
    }
    return any;
}
