#pragma once

#include <vector>

#include "accredit/diststats/MADistStats.h"
#include "accredit/host/MCQueryCancel.h"
#include "accredit/host/MCStatus.h"
#include "accredit/host/MCVarList.h"
#include "accredit/host/MultiPassRecordIter.h"

/// What stands behind MAAccreditor; see there.
class MAAccreditorImp {
public:
    MAAccreditorImp(const MCMTD_NAMESPACE::MCVarList& varList, MCCommon::MultiPassRecordIter& iter,
                    MCQueryCancel* queryCancel);
    MAAccreditorImp(const MAAccreditorImp&) = delete;
    MAAccreditorImp& operator=(const MAAccreditorImp&) = delete;
    virtual ~MAAccreditorImp();

    MCCommon::MCStatus ComputeDistStats(const std::vector<std::vector<double>>& cutPoints);
    const MADistStats& GetDistStats() const;
    MCCommon::MCStatus ComputeAccreditation(const MADistStats& refStats,
                                            const std::vector<double>& weights);
    double GetAccreditation() const;

private:
    const MCMTD_NAMESPACE::MCVarList& mVarList;
    MCCommon::MultiPassRecordIter& mRecordIter;
    MADistStats mDistStats;
    double mAccreditation = -1.0;
    MCQueryCancel* mQueryCancel;
};
