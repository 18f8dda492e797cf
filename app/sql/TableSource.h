#pragma once

#include <string>
#include <vector>

#include "accredit/documents/Reference.h"
#include "app/data/LearnReference.h"
#include "app/sql/TableQueries.h"

namespace app {

/// Summarises a table for a comparison with a reference. Columns are matched by name; where none
/// has the name, capital and small letters do not count. Throws UsageError, InputError, Cancelled.
TableSummary SummariseTable(const MADocuments::Reference& reference, TableQueries& table);

/// The reference that is learned from a table: the same as LearnReference from a file with the same
/// rows, but that the moments are nearer to the exact ones, and categories are in ascending order.
/// Kinds come from the types of the columns and, of texts, from the values. Throws UsageError for
/// choices that do not fit the table; InputError for a table without rows, and by name for a column
/// with NaN or infinities, with dates that nobody chose as categories, with too many categories, or
/// of a type that is neither; Cancelled.
LearnedReference LearnTable(TableQueries& table, const ColumnChoices& choices,
                            const MADocuments::MissingTokens& missing);

}  // namespace app
