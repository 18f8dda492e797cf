#pragma once

#include <vector>

#include "accredit/host/AccreditExport.h"

/// @file
/// The cut points that are computed where none are given.

/// The cut points that a data pass computes for a continuous variable whose values have this mean
/// and this sample standard deviation, as MADistStats::GetMeanStdDev gives them: the mean minus 2
/// and 1 deviations, the mean, and the mean plus 1 and 2 deviations, 5 in all; none if the
/// deviation is 0 or missing.
///
/// Who has the moments from an earlier reading of the data can give these cut points to
/// MADistStatsImp and gets in one pass, to the last bit, the summary that takes two without them.
/// Those that MAFindBadCutPoints refuses, because they coincide or are NaN, only a pass can compute
/// for itself.
ACCREDIT_EXPORT std::vector<double> MAComputeCutPoints(double mean, double stdDev);
