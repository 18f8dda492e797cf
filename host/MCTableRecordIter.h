#pragma once

#include <cstddef>
#include <vector>

#include "accredit/host/AccreditExport.h"
#include "accredit/host/MultiPassRecordIter.h"

/// @file
/// Records from a table in memory.

namespace MCCommon {

/// A record source over a table in memory.
class ACCREDIT_EXPORT MCTableRecordIter : public MultiPassRecordIter {
public:
    /// Takes the values record by record, `recordSize` of them each, in list order. If their number
    /// is no multiple of `recordSize`, the last record is shorter, which a data pass refuses. A
    /// `recordSize` below 1 makes a source without records.
    MCTableRecordIter(std::vector<double> values, int recordSize);

    bool HasMoreRecords() override;
    const Record* GetNextRecord() override;
    /// Always ErrorStateNone: a table in memory does not fail.
    int GetErrorState() override;
    /// Always 0.
    int Rewind() override;

private:
    std::vector<double> mValues;
    std::size_t mRecordSize;
    std::size_t mNext = 0;
    Record mRecord;
};

}  // namespace MCCommon
