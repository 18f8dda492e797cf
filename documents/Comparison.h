#pragma once

#include <string>
#include <vector>

#include "accredit/accreditation/MAComparison.h"
#include "accredit/documents/Reference.h"
#include "accredit/host/AccreditExport.h"

/// @file
/// Two references compared.

namespace MADocuments {

/// What MACompareVariables says of a summary that was made with the cut points of `reference`, with
/// all that is known of missing and unreadable data: one entry for each slot of `reference`, in
/// slot order. The slot in `summary` is `result.newSlot` of an entry, -1 if the variable is not
/// there. A variable with other cut points is MAVerdict::NotTested. `alpha`, between 0 and 1, is
/// the chance that any verdict is a change although nothing changed.
ACCREDIT_EXPORT std::vector<MAVariableComparison> Compare(const Reference& reference,
                                                          const Reference& summary,
                                                          double alpha = 0.01);

/// A category that a reference lacks.
struct UnknownCategory {
    std::string text;     ///< In UTF-8; of a number the shortest text that gives it back.
    double cases = 0.0;   ///< Its frequency in the new data, above 0.
    bool isNamed = true;  ///< False for those that were not kept by name; the text is then empty.
};

/// The categories with cases in `summary` that the variable with this slot of `reference` does not
/// have, in the order of their codes. None for a continuous variable, for one that `summary` lacks
/// and for a slot that does not exist.
ACCREDIT_EXPORT std::vector<UnknownCategory> UnknownCategories(const Reference& reference,
                                                               const Reference& summary,
                                                               unsigned int slot);

}  // namespace MADocuments
