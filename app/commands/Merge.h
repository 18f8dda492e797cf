#pragma once

#include <string>
#include <vector>

#include "accredit/host/MCQueryCancel.h"
#include "app/base/Progress.h"
#include "app/commands/Learn.h"

namespace app {

/// What `accredit merge` is asked to do.
struct MergeOptions {
    std::vector<std::string> summaryPaths;  ///< One or more; "-" is standard input.
    std::string outputPath;                 ///< "-" is standard output.
};

/// The summary of all that the stored summaries are of, in their order; see MADocuments::Merge. One
/// document at a time is held beside what has been merged. Throws UsageError, InputError,
/// Cancelled.
Learned MergeSummaries(const MergeOptions& options, Progress& progress, MCQueryCancel& cancel);

}  // namespace app
