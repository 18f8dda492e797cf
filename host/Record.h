#pragma once

#include "accredit/host/AccreditExport.h"

/// @file
/// One data record.

/// Records, their sources, and status values.
namespace MCCommon {

/// One data record: a view of one double for each variable of an MCVarList, in list order. A
/// categorical variable's value is its category code; a missing datum is MCMV::Missing().
///
/// The record does not own the values. They must stay in place until the record source that made
/// the record is asked for the next one.
class ACCREDIT_EXPORT Record {
public:
    /// An empty record.
    Record() = default;

    /// A view of `size` values from `values` on; null makes an empty record.
    Record(const double* values, int size) : mValues(values), mSize(values ? size : 0) {}

    /// The number of values.
    int Size() const { return mSize; }

    /// The first of Size() values, in list order.
    const double* GetAll() const { return mValues; }

private:
    const double* mValues = nullptr;
    int mSize = 0;
};

}  // namespace MCCommon
