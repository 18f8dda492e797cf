#pragma once

#include <array>

#include "accredit/host/MCUniStats.h"

/// @file
/// The summary statistics of a continuous variable, listed once for all that write, read or show
/// them.

namespace MCMTD_NAMESPACE {

/// One summary statistic of a continuous variable.
struct MCSummaryStatistic {
    const char* attribute;                 ///< Its name in the NumericInfo of a PMML document.
    const char* label;                     ///< Its name in JSON.
    double MCUniStats::SummStats::*value;  ///< Where a summary has it.
};

/// All of them, in the order of documents and listings.
inline constexpr std::array<MCSummaryStatistic, 4> kMCSummaryStatistics = {{
    {"minimum", "minimum", &MCUniStats::SummStats::min},
    {"maximum", "maximum", &MCUniStats::SummStats::max},
    {"mean", "mean", &MCUniStats::SummStats::mean},
    {"standardDeviation", "standard_deviation", &MCUniStats::SummStats::stdDev},
}};

}  // namespace MCMTD_NAMESPACE
