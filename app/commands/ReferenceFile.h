#pragma once

#include <optional>
#include <string>
#include <vector>

#include "accredit/documents/Reference.h"
#include "accredit/host/MCVarList.h"
#include "app/base/InputFile.h"
#include "app/commands/DataOptions.h"

namespace app {

/// A file that begins like a stored reference.
struct Document {
    std::string fileName;  ///< Fit to be shown.
    std::string text;
};

/// The whole file, of which nothing has been read, if it begins like a document. If it does not,
/// nothing, and the file stands at its beginning. Throws InputError, Cancelled.
std::optional<Document> LoadDocument(InputFile& file);

/// The same of a file that must be one. Throws InputError, Cancelled.
Document LoadReference(InputFile& file);

/// The reference that a document holds; the columns named in `ignored` are not input variables of
/// it. Throws InputError with the place in the file.
MADocuments::Reference ReferenceIn(const Document& document,
                                   const std::vector<std::string>& ignored);

/// Applies what the user says of missing values to a stored reference that names no tokens: its own
/// stay, and those of `data` come to them or in their place. Throws UsageError, with what `settled`
/// says, for options that the reference has settled, and for a token that is a category of it, with
/// the column.
void SettleMissing(const DataOptions& data, const std::string& settled,
                   MADocuments::Reference& reference);

/// What the summary of each variable contradicts itself in, with the file's name, the column and
/// what to do, one text each.
std::vector<std::string> ContradictionsIn(const MADocuments::Reference& reference,
                                          const std::string& fileName);

/// The names of all variables of a list, in its order.
std::vector<std::string> NamesOf(const MCMTD_NAMESPACE::MCVarList& list);

/// Refuses a stored summary that cannot be compared with the reference, because it was not made
/// with `learn --bins-of`: other cut points, kinds or missing tokens. Throws InputError.
void RequireBinsOf(const MADocuments::Reference& reference, const MADocuments::Reference& summary,
                   const std::string& fileName);

}  // namespace app
