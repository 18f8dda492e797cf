#pragma once

#include <optional>
#include <string>
#include <vector>

#include "accredit/documents/Reference.h"
#include "accredit/host/MCQueryCancel.h"
#include "app/base/InputFile.h"
#include "app/base/Progress.h"

namespace app {

/// The reference that the file holds if it begins like a document, nothing if it does not; the path
/// "-" is standard input. `reading` says whether a file that holds none will be read as data. The
/// columns named in `ignored` are not input variables of the reference.
/// Throws InputError, with the place in the file, and Cancelled.
std::optional<MADocuments::Reference> LoadReference(const std::string& path, Reading reading,
                                                    const std::vector<std::string>& ignored,
                                                    Progress& progress, MCQueryCancel& cancel);

}  // namespace app
