#pragma once

#include <string>
#include <vector>

#include "accredit/documents/MissingTokens.h"
#include "app/data/Column.h"
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

/// The columns of a reference with their kinds, for which the file is read to its end and gone
/// back to the beginning. A column whose every field is a number or missing is continuous, any
/// other is categorical, unless the user chose; a categorical column of nothing but numbers has
/// number categories.
///
/// Throws UsageError for choices of a kind that name no column and for contradicting ones,
/// InputError when a column that was chosen as continuous holds anything but numbers, Cancelled.
std::vector<Column> SettleKinds(CsvReader& reader, const ColumnChoices& choices,
                                const MADocuments::MissingTokens& missing);

}  // namespace app
