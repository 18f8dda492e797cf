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

/// What is said of a column whose type, as the engine calls it, has neither numbers nor texts;
/// empty for any other.
std::string WrongType(Storage storage, const std::string& type, const Column& column);

/// Finds the problems that show in the answers: numbers that are none, and categories that take too
/// much memory together. Leaves those that are known.
void FindProblems(std::vector<AnsweredColumn>& columns, std::uint64_t rows,
                  const MADocuments::MissingTokens& missing);

/// The summary of a table. Its list has the columns in their order; those that are ignored, or have
/// a problem, are no input variables. Throws InputError if the counts contradict each other,
/// because the table changed between two queries. What made the summary is left open.
MADocuments::Reference SummaryOf(const std::vector<AnsweredColumn>& columns, std::uint64_t rows,
                                 const MADocuments::MissingTokens& missing,
                                 const std::string& tableName);

/// Why a variable of the reference is not tested though the table has it.
struct UntestedColumn {
    std::string name;
    std::string problem;  ///< "holds NaN or ..."; with what to do.
};

/// A table summarised with the bins of a reference.
struct TableSummary {
    /// As SummariseLike gives it of a file with the same rows, but for the order of categories; its
    /// list has the reference's variables that the table has.
    MADocuments::Reference summary;
    std::vector<UntestedColumn> untested;
    /// What a person should know of the columns besides.
    std::vector<std::string> remarks;
};

/// The summary of a table that is to be compared with the reference.
MADocuments::Reference SummaryLike(const MADocuments::Reference& reference,
                                   const std::vector<AnsweredColumn>& columns, std::uint64_t rows,
                                   const std::string& tableName);

/// Those of the columns that have a problem.
std::vector<UntestedColumn> UntestedColumns(const std::vector<AnsweredColumn>& columns);

/// Throws the InputError of a table that changed between two queries.
[[noreturn]] void RefuseChangedTable(const std::string& tableName);

}  // namespace app
