#include "accredit/accreditation/internal/MAAccreditorImp.h"

#include "accredit/accreditation/MAVariableResult.h"

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
    return MAAccreditation(refStats, mDistStats, weights, mAccreditation);
}

double MAAccreditorImp::GetAccreditation() const { return mAccreditation; }
