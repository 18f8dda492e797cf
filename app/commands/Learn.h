#pragma once

#include <string>
#include <vector>

#include "accredit/documents/Reference.h"
#include "accredit/host/MCQueryCancel.h"
#include "app/base/Progress.h"
#include "app/data/ColumnKinds.h"

namespace app {

/// What `accredit learn` is asked to do.
struct LearnOptions {
    std::string dataPath;
    std::string outputPath;  ///< "-" is standard output.
    /// A stored reference with whose bins the data is summarised; empty for bins of its own.
    std::string binsOfPath;
    std::vector<std::string> missing;
    ColumnChoices columns;
};

/// The reference that is learned from the file, see LearnReference; or its summary with the bins of
/// another, see SummariseLike. Throws UsageError, InputError, Cancelled.
MADocuments::Reference Learn(const LearnOptions& options, Progress& progress,
                             MCQueryCancel& cancel);

/// The document of a reference that was learned from the file of this name, fit to be shown. Throws
/// InputError for what a document cannot hold, with the column.
std::string DocumentOf(const MADocuments::Reference& reference, const std::string& dataName);

/// What a person should know of a summary that was stored: columns of a reference of which nearly
/// all cases lie in one bin, and cells that could not be read. One text each.
std::vector<std::string> WarningsOf(const MADocuments::Reference& summary,
                                    const LearnOptions& options);

}  // namespace app
