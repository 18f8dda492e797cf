#pragma once

#include <string>
#include <vector>

#include "accredit/host/MCQueryCancel.h"
#include "app/base/Progress.h"
#include "app/data/ColumnKinds.h"

namespace app {

/// What `accredit learn` is asked to do.
struct LearnOptions {
    std::string dataPath;
    std::string outputPath;  ///< "-" is standard output.
    std::vector<std::string> missing;
    ColumnChoices columns;
};

/// The document of a reference that is learned from a file, which is read up to three times: for
/// the kinds of its columns, for the summary, and for the bins. Memory does not grow with the
/// number of rows.
///
/// Throws UsageError for options that do not fit the file, InputError, Cancelled.
std::string Learn(const LearnOptions& options, Progress& progress, MCQueryCancel& cancel);

}  // namespace app
