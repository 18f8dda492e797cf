#pragma once

#include <optional>
#include <string>
#include <vector>

#include "accredit/host/MCQueryCancel.h"
#include "app/base/Progress.h"
#include "app/commands/Comparison.h"
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

/// Compares the new file with the reference. A data file is read up to three times and learned as
/// a reference; of a stored reference, which its beginning tells apart, all that is known, and the
/// result is the same to the last bit. The new file is read once. Memory does not grow with the
/// number of rows.
///
/// Throws UsageError for options that do not fit the reference, InputError, Cancelled.
CheckResult Check(const CheckOptions& options, Progress& progress, MCQueryCancel& cancel);

}  // namespace app
