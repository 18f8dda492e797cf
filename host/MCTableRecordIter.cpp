#include "accredit/host/MCTableRecordIter.h"

#include <algorithm>
#include <utility>

namespace MCCommon {

MCTableRecordIter::MCTableRecordIter(std::vector<double> values, int recordSize)
    : mRecordSize(static_cast<std::size_t>(std::max(recordSize, 0))) {
    if (mRecordSize > 0) mValues = std::move(values);
}

bool MCTableRecordIter::HasMoreRecords() { return mNext < mValues.size(); }

const Record* MCTableRecordIter::GetNextRecord() {
    if (!MCTableRecordIter::HasMoreRecords()) return nullptr;
    const std::size_t size = std::min(mRecordSize, mValues.size() - mNext);
    mRecord = Record(mValues.data() + mNext, static_cast<int>(size));
    mNext += size;
    return &mRecord;
}

int MCTableRecordIter::GetErrorState() { return ErrorStateNone; }

int MCTableRecordIter::Rewind() {
    mNext = 0;
    return 0;
}

}  // namespace MCCommon
