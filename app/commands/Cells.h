#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include "app/commands/Comparison.h"

namespace app {

/// One cell of a variable's table: a bin or a category, with its cases.
struct Cell {
    double referenceCount = 0.0;
    double newCount = 0.0;
    /// The margins of a bin, the lower one not part of it; infinite where it has none.
    double lower = -std::numeric_limits<double>::infinity();
    double upper = std::numeric_limits<double>::infinity();
    /// A category: a number, or a text as the data has it.
    bool isNumber = false;
    double number = 0.0;
    std::string text = {};
    /// Has no value: stands for the categories that were too many to be kept, or for one whose code
    /// no value has.
    bool isOthers = false;
    bool isUnknown = false;  ///< The reference lacks the category.
};

/// The category of this code of a summary, without its cases.
Cell CategoryAt(const MADocuments::Reference& summary, unsigned int slot, int code);

/// The bin of this index between cut points, without its cases.
Cell BinAt(const std::vector<double>& cutPoints, std::size_t index);

/// The shares of one cell in both samples.
struct Shares {
    double reference = 0.0;
    double observed = 0.0;
};

/// Those of the cell of this index, of samples that both have cases.
Shares SharesOf(const CheckedVariable& variable, std::size_t index);

/// The cell of this index in the table of a variable that has one; see MACells.
Cell CellAt(const CheckResult& result, std::size_t variable, std::size_t index);

/// Categories that only one side has, by their indexes.
struct OneSided {
    std::vector<std::size_t>
        named;             ///< At most 20, the most frequent first, of equal ones the first.
    std::size_t more = 0;  ///< So many are not among these.
    int others = -1;       ///< The cell of those that were not kept by name, or -1.
};

/// The categories that the reference lacks, and those that it has and the new data lacks.
OneSided UnknownCategories(const CheckResult& result, std::size_t variable);
OneSided VanishedCategories(const CheckResult& result, std::size_t variable);

/// A cell's name for reading: "up to 3.5", "3.5 to 7", "above 7", a category between quotes, or
/// "others". A constant's middle bin is the number itself.
std::string CellName(const Cell& cell);

}  // namespace app
