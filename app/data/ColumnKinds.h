#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "accredit/documents/MissingTokens.h"
#include "app/data/Column.h"
#include "app/data/ColumnScan.h"
#include "app/data/CsvReader.h"

namespace app {

/// What the user says about columns, by their names.
struct ColumnChoices {
    std::vector<std::string> ignored;
    std::vector<std::string> categorical;
    std::vector<std::string> continuous;
};

/// Refuses names that are in none of the lists. `complaint` stands before the name. Throws
/// UsageError.
void RequireColumns(const std::vector<std::string>& names,
                    const std::vector<const std::vector<std::string>*>& lists,
                    const std::string& complaint);

/// Refuses headings of a reference that name no column for certain: an empty one, and one that
/// stands twice. The columns named in `ignored` may have any heading. Throws InputError.
void CheckHeadings(const CsvReader& reader, const std::vector<std::string>& ignored);

/// Refuses a new file in which a column of the reference stands twice; `reference` has the headings
/// of the reference. Any other columns may have any heading. Throws InputError.
void CheckNewHeadings(const CsvReader& reader, const std::vector<std::string>& reference,
                      const std::vector<std::string>& ignored);

/// What the user says about one column.
enum class Choice { None, Ignored, Categorical, Continuous };

/// The choice for each heading. Throws UsageError for choices of a kind that name no column and for
/// contradicting ones.
std::vector<Choice> ChoicesByColumn(const std::vector<std::string>& headings,
                                    const ColumnChoices& choices);

/// Why a column of data is no part of the reference that is learned from it.
enum class LeftOut { No, Ignored, Keys, Dates };

/// A column of a reference's data and what it was settled by.
struct SettledColumn {
    Column column;
    LeftOut leftOut = LeftOut::No;
    bool isChosen = false;  ///< By the user.
    ColumnFacts facts;      ///< None of a column that the user ignores.
    /// Of a continuous column of files, those that a data pass computes; see MAComputeCutPoints.
    std::vector<double> cutPoints;
};

/// The columns of a reference's data, in their order, and what else its first reading found.
struct SettledColumns {
    std::vector<SettledColumn> columns;
    char delimiter = ',';  ///< Of the first file.
    /// Rows of several fields that are all empty, as spreadsheets write them behind a table.
    std::uint64_t emptyRows = 0;
    ShownCell firstEmptyRow;  ///< Without a text.
};

/// The columns of a reference with their kinds and cut points, for which the data is read to its
/// end and gone back to the beginning. Missing values do not count.
///
/// - A column is continuous if all its cells are numbers but for a few, at most 100 and at most one
///   in a thousand.
/// - It is left out if as many of its cells are dates, or if more than half of its values and more
///   than 1000 are different texts, as keys are.
/// - Any other is categorical, and so is every one that the user chooses as such; of nothing but
///   numbers, it has number categories.
///
/// Throws UsageError for choices of a kind that name no column and for contradicting ones;
/// InputError when a column that was chosen as continuous holds anything but numbers, and when all
/// cells of one that was not chosen, or all but as few, are numbers as spreadsheets show them;
/// OutputError, Cancelled.
SettledColumns SettleKinds(CsvReader& reader, const ColumnChoices& choices,
                           const MADocuments::MissingTokens& missing);

/// The kind of a column by its facts; see SettleKinds. `settled` has its name and facts and gets
/// the rest. False, and nothing is settled, for numbers as spreadsheets show them.
bool SettleByFacts(Choice choice, SettledColumn& settled);

/// What must be wrong with the delimiter of a file whose only column is full of another; empty if
/// nothing is.
std::string WrongDelimiter(const SettledColumns& data);

}  // namespace app
