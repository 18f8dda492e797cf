#pragma once

#include <vector>

#include "accredit/diststats/MADistStats.h"
#include "accredit/host/AccreditExport.h"

/// @file
/// Summaries of parts put together into one of the whole.

/// Why two summaries cannot be merged.
enum class MAMergeProblem : int {
    None = 0,               ///< They can.
    OtherVariables = 1,     ///< One has an input variable that the other lacks.
    OtherKind = 2,          ///< Another measurement level, or texts here and numbers there.
    OtherCutPoints = 3,     ///< The bins of a continuous variable are not the same.
    TooManyCases = 4,       ///< A count of both is no whole number that its type holds exactly.
    TooManyCategories = 5,  ///< Together more than MCPMMLExporter::kMaxCategories.
};

/// What comes of merging two summaries.
struct ACCREDIT_EXPORT MAMerged {
    MADistStats stats;  ///< Empty if there is a problem.
    /// For each slot of `stats`, which are those of the first: the slot in the second; empty if one
    /// of the two was skipped.
    std::vector<int> secondSlots;
    MAMergeProblem problem = MAMergeProblem::None;  ///< What is wrong.
    int slot = -1;        ///< Of the variable with the problem in the first, -1 if it lacks it.
    int secondSlot = -1;  ///< The same of the second.
};

/// The summary of the cases of both. They have the same input variables, found by name (by their
/// place where names are there twice or empty), and the same cut points; the order is that of the
/// first. An empty handle is skipped, and the other summary comes back as it is.
///
/// Counts, frequencies, minimum and maximum are those of one pass over the records of the first and
/// then of the second, if no value was NaN. Mean and standard deviation are near, but not equal, to
/// those of one pass: they are made by the pairwise update, in which a summary of one case has the
/// sum of squares 0 and one without cases is skipped. The standard deviation is exactly 0 where
/// minimum and maximum of both are equal. Comparisons rest on counts and on whether a variable
/// varies, so that the accreditation and all verdicts are those of one pass to the last bit, unless
/// a value is infinite or a deviation underflows or overflows.
///
/// Categories are found by their value. They have the codes of the first, and behind them come
/// those that only the second has, in their order; last, as one category without a name, the cases
/// of all codes that an encoder does not give back for the value that it decodes them to. Where the
/// encoders of both have the same categories under the same codes, or none at all, frequencies are
/// added code by code, those of codes beyond the categories included. The list has ready-made
/// variables and encoders of its own, which do not grow, and of other variables than input
/// variables no encoders.
///
/// Source: T. F. Chan, G. H. Golub and R. J. LeVeque, The American Statistician 37 (1983), 242-247.
ACCREDIT_EXPORT MAMerged MAMergeDistStats(const MADistStats& first, const MADistStats& second);
