#pragma once

#include "accredit/diststats/MADistStats.h"
#include "accredit/diststats/MADistStatsImp.h"
#include "accredit/host/AccreditExport.h"
#include "accredit/host/MCUniStats.h"

/// @file
/// A summary's variables one by one, in the form in which they travel into a document.

/// The statistics of one slot, as ExportAsXML writes them and MADistStatsImp::SetAllStats takes
/// them back: the variable's name, the number of cases, and the frequencies; of a continuous
/// variable also the summary values, missing ones included, and the k + 2 margins of its bins, none
/// without cut points (see MCUniStats). The number of missing data is not known. What a data pass
/// leaves of a categorical variable can have fewer frequencies than SetAllStats wants: they end
/// with the highest code seen.
///
/// An empty object, with an empty name, for a slot that does not exist and for an empty handle.
ACCREDIT_EXPORT MCMTD_NAMESPACE::MCUniStats MAUniStatsOf(const MADistStatsImp& stats,
                                                         unsigned int slot);
/// The same of a handle's summary.
ACCREDIT_EXPORT MCMTD_NAMESPACE::MCUniStats MAUniStatsOf(const MADistStats& stats,
                                                         unsigned int slot);
