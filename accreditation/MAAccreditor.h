#pragma once

#include <memory>
#include <vector>

#include "accredit/diststats/MADistStats.h"
#include "accredit/host/AccreditExport.h"
#include "accredit/host/MCQueryCancel.h"
#include "accredit/host/MCStatus.h"
#include "accredit/host/MCVarList.h"
#include "accredit/host/MultiPassRecordIter.h"

/// @file
/// Comparing new data with a reference summary.

class MAAccreditorImp;

/// Answers whether new data looks like the data that a model was built on. It summarises the new
/// data, tests each variable of a reference summary against it, and gives one number, the
/// accreditation: the weighted mean of the p-values, near 0 for a new sample that does not fit the
/// reference. What it is for one that fits, MAExpectedAccreditation says: mostly between 0.2 and
/// 0.5.
///
/// The variable list, the record source and the cancellation query belong to the caller and must
/// outlive the accreditor. An accreditor is used by one thread at a time.
class ACCREDIT_EXPORT MAAccreditor {
public:
    /// An accreditor of the records of `iter`, which `varList` describes, with an empty summary and
    /// the accreditation -1. `queryCancel` may be null.
    /// Throws MCStatus: MAStatusNoInputVars.
    MAAccreditor(const MCMTD_NAMESPACE::MCVarList& varList, MCCommon::MultiPassRecordIter& iter,
                 MCQueryCancel* queryCancel);

    MAAccreditor(const MAAccreditor&) = delete;
    MAAccreditor& operator=(const MAAccreditor&) = delete;
    virtual ~MAAccreditor();

    /// Summarises the new data in one pass with the reference's cut points: one list for each input
    /// variable of the accreditor's own list, in that list's order (MatchVariables lines two lists
    /// up). With an empty `cutPoints` the new data gets cut points of its own from two passes, and
    /// a comparison is then worth nothing: bins are compared by their number, wherever they lie.
    /// The record source is read from wherever it stands.
    ///
    /// Gives the failure of the pass, a cancellation included (see MADistStatsImp); the summary of
    /// an earlier call and the accreditation then stay. Only MCStatus is caught.
    MCCommon::MCStatus ComputeDistStats(const std::vector<std::vector<double>>& cutPoints);

    /// The summary of the new data: empty before ComputeDistStats succeeded. Valid until the next
    /// ComputeDistStats or the end of the accreditor.
    const MADistStats& GetDistStats() const;

    /// Compares the new data with a reference: each variable by Pearson's chi-square test that the
    /// new frequencies come from the distribution of the reference's, over its m categories or
    /// bins, with m - 1 degrees of freedom. `weights` is empty for a plain mean, or has one entry,
    /// 0 or more and finite, for each input variable of the reference, in its order; one that is
    /// not finite leaves no number: -1 or a NaN. A variable of weight 0 is tested all the same;
    /// variables that only the new data has are ignored. A test that could not be carried out
    /// without being a failure enters the mean with the p-value -1.
    ///
    /// Gives the first failure, and the accreditation is then -1: MAStatusNoDistStats if one of the
    /// summaries is empty; MAStatusUnnamedVariable, MAStatusVariableNotFound,
    /// MAStatusVariableNotInput or MAStatusVariableTypeDiffers, with the variable's position in the
    /// reference list as datum 0; MAStatusBadWeights; MAStatusNoCases, MAStatusTooFewCases or
    /// MAStatusCategoriesDiffer of a variable. Weights that sum to 0 are no failure, and the
    /// accreditation is -1. MATestVariables tells which variable failed.
    MCCommon::MCStatus ComputeAccreditation(const MADistStats& refStats,
                                            const std::vector<double>& weights);

    /// The result of the last ComputeAccreditation: from 0 to 1 in the regular case, -1 if there is
    /// no number.
    double GetAccreditation() const;

    /// Pairs each input variable of `first` with the input variable of the same name in `second`.
    /// `matches` is replaced: it gets one entry for each input variable of `first`, in its order,
    /// the rank of the partner among the input variables of `second`, or -1.
    ///
    /// Gives the first failure in the order of `first`, with the variable's position in `first` as
    /// datum 0: MAStatusUnnamedVariable, MAStatusVariableNotFound, MAStatusVariableNotInput or
    /// MAStatusVariableTypeDiffers. The other variables are matched all the same. Takes time n log
    /// n in the length of the two lists, unless FindVariable of `second` takes linear time (see
    /// MCVarList::GetVarAt). Any thread may call.
    static MCCommon::MCStatus MatchVariables(const MCMTD_NAMESPACE::MCVarList& first,
                                             const MCMTD_NAMESPACE::MCVarList& second,
                                             std::vector<int>& matches);

private:
    std::unique_ptr<MAAccreditorImp> mImp;
};
