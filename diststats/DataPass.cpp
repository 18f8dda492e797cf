// One pass over the records: counting categories, folding values in, filling bins.

#include "accredit/diststats/MADistStatsImp.h"
#include "accredit/diststats/internal/Accumulators.h"

using MCCommon::MCStatus;
using MCCommon::MultiPassRecordIter;
using MCCommon::Record;
using MCMTD_NAMESPACE::MCVarList;

namespace {

// One poll in so many records keeps the query's cost out of the pass.
constexpr unsigned long kRecordsPerPoll = 20;

}  // namespace

MCStatus MADistStatsImp::MakeADataPass(const MCVarList& varList, MultiPassRecordIter& iter,
                                       bool updateSummaries, bool updateBins) {
    MADetail::Accumulators pass(mVarIndex, mCategorical, mCutPoints);
    mPass = &pass;
    MCStatus status;
    for (unsigned long counter = 0; status.IsOK() && iter.HasMoreRecords(); ++counter) {
        if (counter % kRecordsPerPoll == 0 && mQueryCancel && mQueryCancel->QueryCancel()) {
            status = {MAStatusCancelled, false};
        } else if (const Record* record = iter.GetNextRecord(); !record) {
            const bool stopped = iter.GetErrorState() == MultiPassRecordIter::ErrorStateCancelled;
            status = {stopped ? MAStatusCancelled : MAStatusRecordSource, false};
        } else if (record->Size() != static_cast<int>(varList.Size()) ||
                   record->Size() <= mVarIndex.back()) {
            // The list is the caller's, and may have become shorter since the variables were
            // collected.
            status = {MAStatusRecordSize, false};
        } else {
            status = ProcessRecord(varList, *record, updateSummaries, updateBins);
        }
    }
    mPass = nullptr;
    if (updateSummaries) pass.StoreSummaries(mSummaries, mFrequencies);
    if (updateBins) pass.StoreBins(mFrequencies);
    return status;
}

MCStatus MADistStatsImp::ProcessRecord(const MCVarList& /*varList*/, const Record& record,
                                       bool updateSummaries, bool updateBins) {
    const double* values = record.GetAll();
    if (updateSummaries) {
        mPass->CountCategories(values);
        mPass->Fold(values);
    }
    if (updateBins) mPass->CountBins(values);
    return {};
}
