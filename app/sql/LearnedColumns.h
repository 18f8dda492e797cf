#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "accredit/documents/MissingTokens.h"
#include "app/data/ColumnKinds.h"
#include "app/data/LearnReference.h"
#include "app/sql/Connection.h"
#include "app/sql/TableSummary.h"

/// @file
/// How the columns of a table become those of a reference, whatever road the answers take. What
/// cannot be settled is a problem of the column; see RequireNoProblems.

namespace app {

/// Refuses a name that stands twice, unless its columns are ignored. Throws InputError.
void RequireDifferentNames(const std::vector<ResultColumn>& sources, const ColumnChoices& choices,
                           const std::string& tableName);

/// Settles what the type tells. `hasTexts` says whether a column of any type holds texts. The kind
/// of a column of texts stays open; see IsOpen.
void SettleByType(Choice choice, const ResultColumn& source, bool hasTexts, AnsweredColumn& column,
                  SettledColumn& settled);

/// Whether the kind of a column depends on its texts.
bool IsOpen(Choice choice, const AnsweredColumn& column, bool hasTexts);

/// Settles a column by its texts, which have been grouped; `numbers` is how many other values there
/// are. As of a file, but that equal texts come together. True if those numbers are categories,
/// too, and must be grouped with the texts.
bool SettleByTexts(Choice choice, std::uint64_t numbers, const MADocuments::MissingTokens& missing,
                   AnsweredColumn& column, SettledColumn& settled);
/// The problem of a column that has too many texts for that.
std::string TooManyTexts(const Column& column);

/// The cut points of columns of numbers, by their mean and deviation.
void ComputeCutPoints(std::vector<AnsweredColumn>& columns, std::uint64_t rows,
                      const MADocuments::MissingTokens& missing);

/// Throws the InputError of all columns that have a problem.
void RequireNoProblems(const std::vector<AnsweredColumn>& columns, const std::string& tableName);
/// Throws the InputError of a table whose columns are all left out.
void RequireColumnsLeft(const std::vector<AnsweredColumn>& columns, const std::string& tableName);
/// Throws the InputError of a table without rows.
void RequireRows(std::uint64_t rows, const std::string& tableName);

/// The reference of columns that are settled and answered.
LearnedReference ReferenceOf(const std::vector<AnsweredColumn>& columns,
                             std::vector<SettledColumn> settled, std::uint64_t rows,
                             const MADocuments::MissingTokens& missing,
                             const std::string& tableName);

}  // namespace app
