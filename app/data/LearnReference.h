#pragma once

#include <vector>

#include "accredit/documents/Reference.h"
#include "accredit/host/MCQueryCancel.h"
#include "app/data/ColumnKinds.h"
#include "app/data/CsvReader.h"

namespace app {

/// A reference and what was found of the data that it was learned from.
struct LearnedReference {
    /// Its list has every column; those that are left out are no input variables. What made it is
    /// left open.
    MADocuments::Reference reference;
    SettledColumns data;  ///< In the order of the list.
};

/// The reference that is learned from data, which is read twice: for the kinds of its columns and
/// their cut points, see SettleKinds, and for the summary. Where cut points coincide or overflow it
/// is read a third time, for the bins. Memory does not grow with the number of rows.
///
/// Throws UsageError for choices that do not fit the data, InputError, also for data without rows
/// or without a column that is not left out, OutputError, and Cancelled.
LearnedReference LearnReference(CsvReader& reader, const ColumnChoices& choices,
                                const MADocuments::MissingTokens& missing, MCQueryCancel& cancel);

}  // namespace app
