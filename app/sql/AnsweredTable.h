#pragma once

#include <string>
#include <vector>

#include "accredit/documents/Reference.h"
#include "app/sql/Answers.h"
#include "app/sql/Statement.h"
#include "app/sql/TableSummary.h"

/// @file
/// Tables that are summarised by statements, which the engine's own client runs, and not over a
/// connection.

namespace app {

/// What a statement asks of a table that is to be compared with the reference: a column for every
/// slot.
std::vector<StatementColumn> ColumnsToCheck(const MADocuments::Reference& reference);

/// The same as SummariseTable, by the answers to the statement about ColumnsToCheck. Throws
/// InputError.
TableSummary SummariseAnswers(const MADocuments::Reference& reference, const Answers& answers);

}  // namespace app
