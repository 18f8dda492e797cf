#pragma once

#include <string>

#include "accredit/diststats/MADistStats.h"
#include "accredit/host/AccreditExport.h"

/// @file
/// What a loaded summary says that no data has.

namespace MADocuments {

/// What in the summary of a variable cannot be together if it was made of data in one pass, as the
/// end of a sentence ("the mean does not lie between minimum and maximum"): the mean and the
/// deviation fit minimum, maximum and bins, and minimum and maximum lie in bins that have cases.
/// Rounding is allowed for; bins that do not sum to the cases are taken for weights, which say
/// nothing of single values. Such a summary can be loaded, stored and compared all the same.
///
/// Empty if nothing is wrong, and for a categorical variable, a variable without cases, one with
/// numbers that are not finite, and a slot that does not exist. Throws std::bad_alloc.
ACCREDIT_EXPORT std::string FindContradiction(const MADistStats& stats, unsigned int slot);

}  // namespace MADocuments
