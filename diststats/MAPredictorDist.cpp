#include "accredit/diststats/MAPredictorDist.h"

#include "accredit/diststats/internal/MAPredictorDistImp.h"

using MCCommon::MCStatus;
using MCCommon::MultiPassRecordIter;
using MCMTD_NAMESPACE::MCVarList;

MAPredictorDist::MAPredictorDist(const MCVarList& varList, MultiPassRecordIter& iter,
                                 MCQueryCancel* queryCancel)
    : mImp(std::make_unique<MAPredictorDistImp>(varList, iter, queryCancel)) {}

MAPredictorDist::~MAPredictorDist() = default;

MCStatus MAPredictorDist::ComputeDistStats() { return mImp->ComputeDistStats(); }

MCStatus MAPredictorDist::ExportDistStatsXML(const MCApplicInfo4XML* info,
                                             std::ostream& out) const {
    return mImp->ExportDistStatsXML(info, out);
}

const MADistStats& MAPredictorDist::GetDistStats() const { return mImp->GetDistStats(); }

MAPredictorDistImp::MAPredictorDistImp(const MCVarList& varList, MultiPassRecordIter& iter,
                                       MCQueryCancel* queryCancel)
    : mVarList(varList), mRecordIter(iter), mQueryCancel(queryCancel) {
    if (mVarList.GetNumInputVars() == 0) throw MCStatus(MAStatusNoInputVars, false);
}

MAPredictorDistImp::~MAPredictorDistImp() = default;

MCStatus MAPredictorDistImp::ComputeDistStats() {
    const std::vector<std::vector<double>> computed;
    try {
        mDistStats = MADistStats(new MADistStatsImp(mVarList, mRecordIter, computed, mQueryCancel));
    } catch (MCStatus& status) {
        return status;
    }
    return {};
}

MCStatus MAPredictorDistImp::ExportDistStatsXML(const MCApplicInfo4XML* info,
                                                std::ostream& out) const {
    return mDistStats.ExportAsXML(info, out);
}

const MADistStats& MAPredictorDistImp::GetDistStats() const { return mDistStats; }
