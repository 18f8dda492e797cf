#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "accredit/diststats/MADistStats.h"
#include "accredit/host/AccreditExport.h"
#include "accredit/host/MCStatus.h"
#include "accredit/host/MCVarList.h"

/// @file
/// A summary of records that come one at a time.

/// Summarises records that an application has one at a time, such as the requests of a scoring
/// service. It gives to the last bit what MADistStatsImp makes of a record source with the same
/// records in the same order and with the same cut points.
///
/// A builder keeps a copy of the variable list. An encoder that grows is added to the list by
/// AddShared and belongs to one builder: the summaries that the builder gives out share it, so they
/// are read by the thread that lets it grow. Memory does not grow with the number of records. A
/// builder is used by one thread at a time; what several have seen, MAMergeDistStats puts together.
/// One that was moved from can only be assigned to or destroyed.
class ACCREDIT_EXPORT MASummaryBuilder {
public:
    /// A builder without records. `cutPoints` has one list for each input variable of `varList`, in
    /// list order, as MADistStatsImp takes them: strictly ascending for continuous variables, which
    /// an empty list leaves without bins. There must be lists: computing cut points would take a
    /// second pass over the records. Throws MCStatus: MAStatusNoInputVars, MAStatusBadCutPoints
    /// (MAFindBadCutPoints tells which variable it is).
    MASummaryBuilder(const MCMTD_NAMESPACE::MCVarList& varList,
                     const std::vector<std::vector<double>>& cutPoints);

    /// Takes over.
    MASummaryBuilder(MASummaryBuilder&& other) noexcept;
    /// The same.
    MASummaryBuilder& operator=(MASummaryBuilder&& other) noexcept;
    ~MASummaryBuilder();

    /// Folds a record in: one value for each variable of the list, in list order, a category as its
    /// code. Values mean what they mean in a data pass, missing ones, NaN and codes out of range
    /// included. Gives MAStatusRecordSize, and nothing changes, for a record of another length. If
    /// memory runs out, nothing changes.
    MCCommon::MCStatus Add(const std::vector<double>& values);
    /// The same of so many values from `values` on.
    MCCommon::MCStatus Add(const double* values, std::size_t size);

    /// The number of records that were folded in.
    unsigned long GetRecordCount() const;

    /// The summary of the records so far, which has a copy of the list. The builder goes on as if
    /// it had not been asked.
    MADistStats GetDistStats() const;

    /// Forgets all records. List and cut points stay, and so do the categories of encoders.
    void Clear();

private:
    struct State;

    std::unique_ptr<State> mState;
};
