#include "accredit/diststats/MADistStatsImp.h"

#include <cstddef>
#include <utility>

#include "accredit/host/internal/NeverDestroyed.h"

using MCCommon::MCStatus;
using MCCommon::MultiPassRecordIter;
using MCDetail::NeverDestroyed;
using MCMTD_NAMESPACE::IMCVariable;
using MCMTD_NAMESPACE::MCVarList;

MADistStatsImp::MADistStatsImp(const MCVarList& varList, MCQueryCancel* queryCancel)
    : mVarList(varList), mQueryCancel(queryCancel) {
    CollectInputVariables(mVarList);
    if (mVarIndex.empty()) throw MCStatus(MAStatusNoInputVars, false);
    mFrequencies.resize(mVarIndex.size());
    mCutPoints.resize(mVarIndex.size());
    mSummaries.resize(mVarIndex.size());
}

MADistStatsImp::MADistStatsImp(const MCVarList& varList, MultiPassRecordIter& iter,
                               const std::vector<std::vector<double>>& cutPoints,
                               MCQueryCancel* queryCancel)
    : mQueryCancel(queryCancel) {
    CollectInputVariables(varList);
    if (mVarIndex.empty()) throw MCStatus(MAStatusNoInputVars, false);
    if (!CutPointsAreValid(mVarIndex, mCategorical, cutPoints)) {
        throw MCStatus(MAStatusBadCutPoints, false);
    }
    mFrequencies.resize(mVarIndex.size());
    mSummaries.resize(mVarIndex.size());
    const bool given = !cutPoints.empty();
    if (given) UseExistingCutPoints(varList, cutPoints);

    MCStatus status = MakeADataPass(varList, iter, true, given);
    if (!status.IsOK()) throw status;
    for (VarSummary& summary : mSummaries) summary.Finish();

    if (!given && ComputeCutPoints(varList)) {
        if (iter.Rewind() != 0) throw MCStatus(MAStatusRecordSource, false);
        status = MakeADataPass(varList, iter, false, true);
        if (!status.IsOK()) throw status;
    }
    // The copy must have every variable that a slot stands for.
    if (static_cast<int>(varList.Size()) <= mVarIndex.back()) {
        throw MCStatus(MAStatusRecordSize, false);
    }
    mVarList = varList;
}

MADistStatsImp::MADistStatsImp(const MADistStatsImp& other) = default;

MADistStatsImp& MADistStatsImp::operator=(const MADistStatsImp& other) {
    // By way of a copy, so that nothing is half assigned when memory runs out.
    MADistStatsImp copy(other);
    mVarList = std::move(copy.mVarList);
    mVarIndex = std::move(copy.mVarIndex);
    mCategorical = std::move(copy.mCategorical);
    mFrequencies = std::move(copy.mFrequencies);
    mCutPoints = std::move(copy.mCutPoints);
    mSummaries = std::move(copy.mSummaries);
    mQueryCancel = copy.mQueryCancel;
    mPass = copy.mPass;
    return *this;
}

MADistStatsImp::~MADistStatsImp() = default;

void MADistStatsImp::CollectInputVariables(const MCVarList& varList) {
    const auto count = static_cast<std::size_t>(varList.GetNumInputVars());
    mVarIndex.resize(count);
    mCategorical.resize(count);
    const int size = static_cast<int>(varList.Size());
    std::size_t slot = 0;
    for (int index = 0; index < size && slot < count; ++index) {
        const IMCVariable& variable = *varList.GetVarAt(index);
        if (variable.GetRole() != IMCVariable::VariableRoleInput) continue;
        mVarIndex[slot] = index;
        mCategorical[slot] =
            MCMTD_NAMESPACE::IsCategoricalLevel(variable.GetMeasureLevel()) ? 1 : 0;
        ++slot;
    }
}

const MCVarList& MADistStatsImp::GetVarList() const { return mVarList; }

unsigned int MADistStatsImp::GetVarCount() const {
    return static_cast<unsigned int>(mVarIndex.size());
}

int MADistStatsImp::GetVarListIndex(unsigned int slot) const {
    return slot < GetVarCount() ? mVarIndex[slot] : -1;
}

bool MADistStatsImp::IsCategorical(unsigned int slot) const {
    return slot < GetVarCount() ? mCategorical[slot] != 0 : true;
}

const std::vector<double>& MADistStatsImp::GetFrequencies(unsigned int slot) const {
    return slot < GetVarCount() ? mFrequencies[slot] : NeverDestroyed<std::vector<double>>();
}

const std::vector<double>& MADistStatsImp::GetCutPoints(unsigned int slot) const {
    return slot < GetVarCount() ? mCutPoints[slot] : NeverDestroyed<std::vector<double>>();
}

unsigned long MADistStatsImp::GetNumberOfCases(unsigned int slot) const {
    return slot < GetVarCount() ? mSummaries[slot].count : 0;
}

void MADistStatsImp::GetMinMax(unsigned int slot, double& min, double& max) const {
    const bool good = slot < GetVarCount();
    min = good ? mSummaries[slot].min : MCMV::Missing();
    max = good ? mSummaries[slot].max : MCMV::Missing();
}

void MADistStatsImp::GetMeanStdDev(unsigned int slot, double& mean, double& stdDev) const {
    const bool good = slot < GetVarCount();
    mean = good ? mSummaries[slot].mean : MCMV::Missing();
    stdDev = good ? mSummaries[slot].stdDev : MCMV::Missing();
}
