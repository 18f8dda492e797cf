#pragma once

#include <string>
#include <vector>

#include "accredit/host/IMCEncoder.h"
#include "accredit/host/IMCVariable.h"
#include "accredit/host/MCVarList.h"

namespace app {

/// How the fields of a column are read.
enum class ColumnKind {
    Ignored,         ///< Not at all.
    Continuous,      ///< As numbers.
    TextCategory,    ///< As category values, compared byte by byte.
    NumberCategory,  ///< As category values, compared as numbers.
};

/// One column of a file.
struct Column {
    std::string name;
    ColumnKind kind = ColumnKind::Ignored;
    /// Whether the column belongs to a new file that is compared with a reference.
    bool isCompared = false;
    /// The reference's categories, if it is; null for one of numbers. Not owned.
    const MCMTD_NAMESPACE::IMCEncoder* reference = nullptr;
    /// Of a column of categories.
    int measureLevel = MCMTD_NAMESPACE::IMCVariable::MeasureLevelNominal;
};

/// The columns of a file that is to be compared with the reference of which this is the list: those
/// that the reference's input variables name are of the same kind as there, the others are ignored.
/// The list must outlive the columns.
std::vector<Column> ColumnsLike(const MCMTD_NAMESPACE::MCVarList& reference,
                                const std::vector<std::string>& headings);

}  // namespace app
