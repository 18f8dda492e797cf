#pragma once

#include <iosfwd>

#include "accredit/diststats/MADistStats.h"
#include "accredit/host/MCQueryCancel.h"
#include "accredit/host/MCStatus.h"
#include "accredit/host/MCVarList.h"
#include "accredit/host/MultiPassRecordIter.h"

/// What stands behind MAPredictorDist; see there.
class MAPredictorDistImp {
public:
    MAPredictorDistImp(const MCMTD_NAMESPACE::MCVarList& varList,
                       MCCommon::MultiPassRecordIter& iter, MCQueryCancel* queryCancel);
    MAPredictorDistImp(const MAPredictorDistImp&) = delete;
    MAPredictorDistImp& operator=(const MAPredictorDistImp&) = delete;
    virtual ~MAPredictorDistImp();

    MCCommon::MCStatus ComputeDistStats();
    MCCommon::MCStatus ExportDistStatsXML(const MCApplicInfo4XML* info, std::ostream& out) const;
    const MADistStats& GetDistStats() const;

private:
    const MCMTD_NAMESPACE::MCVarList& mVarList;
    MCCommon::MultiPassRecordIter& mRecordIter;
    MADistStats mDistStats;
    MCQueryCancel* mQueryCancel;
};
