// Where the bins of continuous variables come from.

#include <cstddef>
#include <cstdint>

#include "accredit/diststats/MACutPoints.h"
#include "accredit/diststats/MADistStatsImp.h"
#include "accredit/diststats/MAProblems.h"
#include "accredit/host/internal/StrictlyAscending.h"

using MCMTD_NAMESPACE::IMCVariable;
using MCMTD_NAMESPACE::MCVarList;

namespace {

// See MAFindBadCutPoints; of each slot there is said whether it is categorical (1) or not (0).
int FindBadCutPoints(const std::vector<std::int16_t>& categorical,
                     const std::vector<std::vector<double>>& cutPoints) {
    if (cutPoints.empty()) return MACutPointsAreGood;
    if (cutPoints.size() != categorical.size()) return MACutPointsDiffer;
    for (std::size_t slot = 0; slot < cutPoints.size(); ++slot) {
        const std::vector<double>& list = cutPoints[slot];
        if (categorical[slot] != 0) continue;
        if (!MCDetail::IsStrictlyAscending(list.begin(), list.end())) {
            return static_cast<int>(slot);
        }
    }
    return MACutPointsAreGood;
}

}  // namespace

int MAFindBadCutPoints(const MCVarList& varList,
                       const std::vector<std::vector<double>>& cutPoints) {
    std::vector<std::int16_t> categorical;
    const int size = static_cast<int>(varList.Size());
    for (int position = 0; position < size; ++position) {
        if (varList.GetVariableRole(position) != IMCVariable::VariableRoleInput) continue;
        const int level = varList.GetVarAt(position)->GetMeasureLevel();
        categorical.push_back(MCMTD_NAMESPACE::IsCategoricalLevel(level) ? 1 : 0);
    }
    return FindBadCutPoints(categorical, cutPoints);
}

std::vector<double> MAComputeCutPoints(double mean, double stdDev) {
    if (MCMV::IsMissing(stdDev) || stdDev == 0.0) return {};
    const double twice = stdDev + stdDev;
    return {mean - twice, mean - stdDev, mean, mean + stdDev, mean + twice};
}

bool MADistStatsImp::CutPointsAreValid(const std::vector<int>& /*varIndex*/,
                                       const std::vector<std::int16_t>& categorical,
                                       const std::vector<std::vector<double>>& cutPoints) {
    return FindBadCutPoints(categorical, cutPoints) == MACutPointsAreGood;
}

void MADistStatsImp::UseExistingCutPoints(const MCVarList& /*varList*/,
                                          const std::vector<std::vector<double>>& cutPoints) {
    if (cutPoints.empty()) return;
    mCutPoints = cutPoints;
    for (std::size_t slot = 0; slot < mCutPoints.size(); ++slot) {
        if (mCategorical[slot] == 0 && !mCutPoints[slot].empty()) {
            mFrequencies[slot].resize(mCutPoints[slot].size() + 1);
        }
    }
}

bool MADistStatsImp::ComputeCutPoints(const MCVarList& /*varList*/) {
    mCutPoints.resize(mVarIndex.size());
    bool any = false;
    for (std::size_t slot = 0; slot < mVarIndex.size(); ++slot) {
        if (mCategorical[slot] != 0) continue;
        mCutPoints[slot] = MAComputeCutPoints(mSummaries[slot].mean, mSummaries[slot].stdDev);
        if (mCutPoints[slot].empty()) continue;
        any = true;
        mFrequencies[slot].resize(mCutPoints[slot].size() + 1);
    }
    return any;
}
