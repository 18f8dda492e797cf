#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "accredit/documents/Reference.h"
#include "app/data/Column.h"
#include "app/sql/Figures.h"

namespace app {

/// A column of a table and all that was answered of it.
struct AnsweredColumn {
    Column column;
    Storage storage = Storage::Any;
    std::vector<double> cutPoints = {};  ///< Of a continuous one, ascending; none for no bins.
    ColumnAnswer answer = {};
    /// Why it is not summarised, with what to do; empty if it is.
    std::string problem = {};
};

/// The different categories that a column may have.
std::uint64_t MaxCategories();
/// The problem of a column that has more, or whose categories take too much memory.
std::string TooManyCategories(const Column& column);

/// Finds the problems that show in the answers: numbers that are none, and categories that take too
/// much memory together. Leaves those that are known.
void FindProblems(std::vector<AnsweredColumn>& columns, const MADocuments::MissingTokens& missing);

/// The summary of a table. Its list has the columns in their order; those that are ignored, or have
/// a problem, are no input variables. Throws InputError if the counts contradict each other,
/// because the table changed between two queries. What made the summary is left open.
MADocuments::Reference SummaryOf(const std::vector<AnsweredColumn>& columns, std::uint64_t rows,
                                 const MADocuments::MissingTokens& missing,
                                 const std::string& tableName);

/// Throws the InputError of a table that changed between two queries.
[[noreturn]] void RefuseChangedTable(const std::string& tableName);

}  // namespace app
