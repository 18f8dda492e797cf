#pragma once

#include <iosfwd>
#include <memory>

#include "accredit/diststats/MADistStats.h"
#include "accredit/host/AccreditExport.h"
#include "accredit/host/MCApplicInfo4XML.h"
#include "accredit/host/MCQueryCancel.h"
#include "accredit/host/MCStatus.h"
#include "accredit/host/MCVarList.h"
#include "accredit/host/MultiPassRecordIter.h"

/// @file
/// Summarising a model's data.

class MAPredictorDistImp;

/// Summarises the data that a model is built on, and writes the summary as a PMML document: what
/// MAAccreditor later compares new data with.
///
/// The variable list, the record source and the cancellation query belong to the caller and must
/// outlive the object. An object is used by one thread at a time.
class ACCREDIT_EXPORT MAPredictorDist {
public:
    /// An object over the records of `iter`, which `varList` describes, with an empty summary.
    /// `queryCancel` may be null. Throws MCStatus: MAStatusNoInputVars.
    MAPredictorDist(const MCMTD_NAMESPACE::MCVarList& varList, MCCommon::MultiPassRecordIter& iter,
                    MCQueryCancel* queryCancel);
    MAPredictorDist(const MAPredictorDist&) = delete;
    MAPredictorDist& operator=(const MAPredictorDist&) = delete;
    virtual ~MAPredictorDist();

    /// Summarises the records, from wherever the source stands, with cut points that are computed
    /// from them: as soon as one continuous variable varies, the source is rewound and read a
    /// second time. Gives the failure of the passes, a cancellation included (see
    /// MADistStatsImp); the summary of an earlier call then stays. Only MCStatus is caught.
    MCCommon::MCStatus ComputeDistStats();

    /// Writes the summary as a PMML document; see MADistStatsImp::ExportAsXML.
    /// MAStatusNoDistStats before ComputeDistStats succeeded.
    MCCommon::MCStatus ExportDistStatsXML(const MCApplicInfo4XML* info, std::ostream& out) const;

    /// The summary: empty before ComputeDistStats succeeded. Valid until the next ComputeDistStats
    /// or the end of the object.
    const MADistStats& GetDistStats() const;

private:
    std::unique_ptr<MAPredictorDistImp> mImp;
};
