#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "accredit/host/MCQueryCancel.h"
#include "app/base/Progress.h"
#include "app/commands/Comparison.h"
#include "app/commands/DataOptions.h"
#include "app/commands/FailRules.h"

namespace app {

/// The weight of a column in the accreditation.
struct ColumnWeight {
    std::string column;
    double weight = 1.0;
};

/// How a report is written.
enum class ReportFormat { Text, Json, OpenMetrics };

/// What `accredit check` is asked to do.
struct CheckOptions {
    std::string referencePath;          ///< A stored reference or a data file.
    std::vector<std::string> newPaths;  ///< Data or stored summaries; "-" is standard input.
    TableOptions table;                 ///< In the place of files.
    DataOptions data;
    std::vector<ColumnWeight> weights;  ///< Columns that are not named weigh 1.
    double alpha = 0.01;
    FailRules rules;
    ReportFormat format = ReportFormat::Text;
    bool showAll = false;    ///< All variables in the text report.
    std::string reportPath;  ///< The page to write; empty for none.
};

/// What reports call the new data, in the order of the results.
std::vector<std::string> NewLabels(const CheckOptions& options);

/// What comparisons with a reference gave.
struct Checked {
    std::vector<CheckResult> results;  ///< One for each new file, in their order.
    /// What a person should know of the data and of stored summaries besides; see RemarksOn and
    /// ContradictionsIn. Each begins with a file's name.
    std::vector<std::string> remarks;
};

/// Compares each new file with the reference. A data file is learned as a reference, see
/// LearnReference; of a stored reference, which its beginning tells apart, all that is known, and
/// the result is the same to the last bit. So it is with new data and its stored summary. New data
/// is read once. Memory does not grow with the number of rows. `log` takes the queries to an engine
/// where they are to be shown.
///
/// Throws UsageError for options that do not fit the reference, InputError, OutputError, Cancelled.
Checked Check(const CheckOptions& options, Progress& progress, MCQueryCancel& cancel,
              std::ostream* log = nullptr);

}  // namespace app
