#pragma once

#include "accredit/host/AccreditExport.h"
#include "accredit/host/Record.h"

/// @file
/// What records come from.

namespace MCCommon {

/// A source of records that can be read more than once. Applications derive their own;
/// MCTableRecordIter reads a table in memory.
class ACCREDIT_EXPORT MultiPassRecordIter {
public:
    /// What GetErrorState tells after GetNextRecord gave null. Every value other than
    /// ErrorStateCancelled is a failure of the source.
    enum ErrorState : int {
        ErrorStateNone = 0,
        ErrorStateFailed = 1,
        ErrorStateCancelled = 2,
    };

    virtual ~MultiPassRecordIter() = default;

    /// True while a further record is to be fetched. A source that failed says true and then gives
    /// null, so that the failure is seen.
    virtual bool HasMoreRecords() = 0;

    /// The next record, owned by the source and valid until the next call, or null if none could be
    /// delivered.
    virtual const Record* GetNextRecord() = 0;

    /// Why GetNextRecord gave null, see ErrorState.
    virtual int GetErrorState() = 0;

    /// Goes back before the first record. Gives 0 on success, any other value on failure.
    virtual int Rewind() = 0;
};

}  // namespace MCCommon
