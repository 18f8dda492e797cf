#pragma once

#include "accredit/documents/Reference.h"
#include "accredit/host/MCQueryCancel.h"
#include "app/data/ColumnKinds.h"
#include "app/data/CsvReader.h"

namespace app {

/// The reference that is learned from a file, which is read up to three times: for the kinds of its
/// columns, for the summary, and for the bins. Its list has every column; those that the user
/// ignores are no input variables. Memory does not grow with the number of rows. What made the
/// reference is left open.
///
/// Throws UsageError for choices that do not fit the file, InputError, also for a file without
/// rows, and Cancelled.
MADocuments::Reference LearnReference(CsvReader& reader, const ColumnChoices& choices,
                                      const MADocuments::MissingTokens& missing,
                                      MCQueryCancel& cancel);

}  // namespace app
