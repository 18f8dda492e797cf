#pragma once

#include "accredit/host/AccreditExport.h"

/// @file
/// The missing value.

/// The system-missing value: one finite double that marks a missing datum in a record, a statistic
/// that does not exist, and the failed result of a distribution function.
///
/// It is the lowest finite double, compares equal to itself and is always tested by exact equality.
/// A NaN is not missing. Stateless; any thread may call.
class ACCREDIT_EXPORT MCMV {
public:
    /// The missing value.
    static constexpr double Missing() { return gMissingValue; }

    /// Whether `value` is exactly the missing value; false for a NaN.
    static constexpr bool IsMissing(double value) { return value == gMissingValue; }

private:
    static constexpr double gMissingValue = -1.7976931348623157e308;
};
