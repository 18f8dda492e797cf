#pragma once

#include "accredit/documents/Reference.h"
#include "accredit/host/AccreditExport.h"

/// @file
/// Two references made one.

namespace MADocuments {

/// The summary of the data of both; see MAMergeDistStats for what is exact and what is near. Counts
/// of missing and unreadable data are added, and not known where one of them is not. The first
/// unreadable datum is that of `first`, if it has one. The cases of categories without a name are
/// put together. The sources are those of both; what made it is what made `first`. A Reference
/// without variables is skipped.
///
/// Throws DocumentError, without a place, if the two cannot be merged: because of other variables,
/// kinds, cut points or missing tokens, because both were made of the same source, or because a
/// count would be too large (missing or unreadable data above 2^53). Throws std::bad_alloc.
///
/// Takes `first` over, so that the sources of many parts need not be copied: whole =
/// Merge(std::move(whole), part).
ACCREDIT_EXPORT Reference Merge(Reference first, const Reference& second);

}  // namespace MADocuments
