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
    std::vector<std::string> missing;
    ColumnChoices columns;
};

/// The reference that is learned from the file; see LearnReference.
MADocuments::Reference Learn(const LearnOptions& options, Progress& progress,
                             MCQueryCancel& cancel);

/// The document of a reference that was learned from the file of this name, fit to be shown. Throws
/// InputError for what a document cannot hold, with the column.
std::string DocumentOf(const MADocuments::Reference& reference, const std::string& dataName);

}  // namespace app
