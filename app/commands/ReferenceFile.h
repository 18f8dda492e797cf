#pragma once

#include <optional>
#include <string>
#include <vector>

#include "accredit/documents/Reference.h"
#include "accredit/host/MCQueryCancel.h"
#include "app/base/InputFile.h"
#include "app/base/Progress.h"

namespace app {

/// A file that begins like a stored reference.
struct Document {
    std::string fileName;  ///< Fit to be shown.
    std::string text;
};

/// The whole file if it begins like a document, nothing if it does not; the path "-" is standard
/// input. `reading` says whether a file that is none will be read as data. Throws InputError,
/// Cancelled.
std::optional<Document> LoadDocument(const std::string& path, Reading reading, Progress& progress,
                                     MCQueryCancel& cancel);

/// The reference that a document holds; the columns named in `ignored` are not input variables of
/// it. Throws InputError with the place in the file.
MADocuments::Reference ReferenceIn(const Document& document,
                                   const std::vector<std::string>& ignored);

}  // namespace app
