#include "accredit/accreditation/internal/MAAccreditorImp.h"

#include <cstddef>

#include "accredit/accreditation/internal/VariableMatching.h"
#include "accredit/accreditation/internal/VariableTests.h"
#include "accredit/accreditation/internal/WeightedMean.h"

using MCCommon::MCStatus;
using MCCommon::MultiPassRecordIter;
using MCMTD_NAMESPACE::MCVarList;

MAAccreditorImp::MAAccreditorImp(const MCVarList& varList, MultiPassRecordIter& iter,
                                 MCQueryCancel* queryCancel)
    : mVarList(varList), mRecordIter(iter), mQueryCancel(queryCancel) {
    if (mVarList.GetNumInputVars() == 0) throw MCStatus(MAStatusNoInputVars, false);
}

MAAccreditorImp::~MAAccreditorImp() = default;

MCStatus MAAccreditorImp::ComputeDistStats(const std::vector<std::vector<double>>& cutPoints) {
    try {
        mDistStats =
            MADistStats(new MADistStatsImp(mVarList, mRecordIter, cutPoints, mQueryCancel));
    } catch (MCStatus& status) {
        return status;
    }
    return {};
}

const MADistStats& MAAccreditorImp::GetDistStats() const { return mDistStats; }

MCStatus MAAccreditorImp::ComputeAccreditation(const MADistStats& refStats,
                                               const std::vector<double>& weights) {
    mAccreditation = -1.0;
    const MCVarList& refList = refStats.GetVarList();
    const MCVarList& ownList = mDistStats.GetVarList();
    if (refList.Size() == 0 || ownList.Size() == 0) return {MAStatusNoDistStats, false};

    std::vector<int> matches;
    MCStatus status = MADetail::MatchVariables(refList, ownList, matches);
    if (status.IsOK()) status = MADetail::CheckWeights(weights, matches.size());
    if (!status.IsOK()) return status;

    std::vector<MAVariableResult> results(matches.size());
    for (std::size_t i = 0; i < matches.size(); ++i) {
        status = MADetail::TestVariable(static_cast<unsigned int>(i), matches[i], refStats,
                                        mDistStats, results[i].pValue);
        if (!status.IsOK()) return status;
    }
    mAccreditation = MADetail::WeightedMean(results, weights);
    return status;
}

double MAAccreditorImp::GetAccreditation() const { return mAccreditation; }
