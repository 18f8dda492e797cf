// One pass over the records: counting categories, folding values in, filling bins.

#include "accredit/diststats/MADistStatsImp.h"
#include "accredit/diststats/internal/Accumulators.h"

using MADetail::Gathered;
using MCCommon::MCStatus;
using MCCommon::MultiPassRecordIter;
using MCCommon::Record;
using MCMTD_NAMESPACE::MCVarList;

namespace {

// One poll in so many records keeps the query's cost out of the pass.
constexpr unsigned int kRecordsPerPoll = 20;

}  // namespace

MCStatus MADistStatsImp::MakeADataPass(const MCVarList& varList, MultiPassRecordIter& iter,
                                       bool updateSummaries, bool updateBins) {
    const Gathered gathered = !updateBins        ? Gathered::Summaries
                              : !updateSummaries ? Gathered::Bins
                                                 : Gathered::SummariesAndBins;
    MADetail::Accumulators pass(mVarIndex, mCategorical, mCutPoints, gathered);
    mPass = &pass;
    const int lastPosition = mVarIndex.back();
    MCStatus status;
    unsigned int untilPoll = 0;
    while (status.IsOK() && iter.HasMoreRecords()) {
        const bool isToPoll = untilPoll == 0;
        untilPoll = (isToPoll ? kRecordsPerPoll : untilPoll) - 1;
        if (isToPoll && mQueryCancel && mQueryCancel->QueryCancel()) {
            status = {MAStatusCancelled, false};
        } else if (const Record* record = iter.GetNextRecord(); !record) {
            const bool stopped = iter.GetErrorState() == MultiPassRecordIter::ErrorStateCancelled;
            status = {stopped ? MAStatusCancelled : MAStatusRecordSource, false};
        } else if (record->Size() != static_cast<int>(varList.Size()) ||
                   record->Size() <= lastPosition) {
            // The list is the caller's, and may have become shorter since the variables were
            // collected.
            status = {MAStatusRecordSize, false};
        } else {
            const MCStatus folded = ProcessRecord(varList, *record, updateSummaries, updateBins);
            if (!folded.IsOK()) status = folded;
        }
    }
    mPass = nullptr;
    if (!status.IsOK()) return status;
    pass.Finish();
    if (updateSummaries) pass.StoreSummaries(mSummaries, mFrequencies);
    if (updateBins) pass.StoreBins(mFrequencies);
    return status;
}

MCStatus MADistStatsImp::ProcessRecord(const MCVarList& /*varList*/, const Record& record,
                                       bool /*updateSummaries*/, bool /*updateBins*/) {
    mPass->Add(record.GetAll());
    return {};
}
