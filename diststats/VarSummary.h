#pragma once

#include "accredit/host/AccreditExport.h"
#include "accredit/host/MCMV.h"

/// @file
/// The summary of one variable.

/// The summary of one variable: a plain record, copied by value.
///
/// While the first data pass runs, `stdDev` holds the running sum of squared deviations from the
/// mean; Finish turns it into the sample standard deviation. A statistic that does not exist is
/// MCMV::Missing().
struct ACCREDIT_EXPORT VarSummary {
    double min = MCMV::Missing();  ///< The smallest value seen.
    double max = MCMV::Missing();  ///< The largest value seen.
    double mean = 0.0;             ///< The mean of the values seen.
    double stdDev = 0.0;           ///< The sample standard deviation, once finished.
    unsigned long count = 0;       ///< The number of cases counted.

    /// Folds one value of a continuous variable in, by Welford's update. The missing value changes
    /// nothing.
    void AddValue(double value);

    /// Counts one case of a categorical variable.
    void AddCase() { ++count; }

    /// Closes the record after the first pass: without any value the mean and the standard
    /// deviation become missing, with one value the standard deviation does, and with equal values
    /// it is exactly 0, whatever rounding the running sum had.
    void Finish();
};
