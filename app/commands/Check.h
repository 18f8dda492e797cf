#pragma once

#include <optional>
#include <string>
#include <vector>

#include "accredit/host/MCQueryCancel.h"
#include "accredit/host/MCStatus.h"
#include "app/base/Progress.h"
#include "app/data/Column.h"
#include "app/data/ColumnKinds.h"

namespace app {

/// The weight of a column in the accreditation.
struct ColumnWeight {
    std::string column;
    double weight = 1.0;
};

/// What `accredit check` is asked to do.
struct CheckOptions {
    std::string referencePath;  ///< A stored reference or a data file.
    std::string newPath;        ///< "-" is standard input.
    std::vector<std::string> missing;
    ColumnChoices columns;
    std::vector<ColumnWeight> weights;  ///< Columns that are not named weigh 1.
    std::optional<double> failBelow;
    bool json = false;
};

/// What the comparison gave for one variable of the reference.
struct CheckedVariable {
    std::string name;
    bool categorical = false;
    unsigned long referenceCases = 0;
    unsigned long newCases = 0;
    std::optional<double> pValue;
    MCCommon::MCStatus status;
    double weight = 1.0;
    /// The first category of the new data that the reference lacks, fit to be shown; empty if there
    /// is none.
    std::string unknownCategory = {};
};

/// What the comparison gave.
struct CheckResult {
    std::optional<double> accreditation;  ///< Nothing if there is no number.
    MCCommon::MCStatus status;
    std::vector<CheckedVariable> variables;  ///< In the order of the reference's columns.
};

/// Compares the new file with the reference. A data file is read up to three times: for the kinds
/// of its columns, for its summary, and for the bins; of a stored reference, which its beginning
/// tells apart, all that is known, and the result is the same to the last bit. The new file is read
/// once. Memory does not grow with the number of rows.
///
/// Throws UsageError for options that do not fit the reference, InputError, Cancelled.
CheckResult Check(const CheckOptions& options, Progress& progress, MCQueryCancel& cancel);

}  // namespace app
