#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "accredit/diststats/MADistStats.h"
#include "accredit/documents/MissingTokens.h"
#include "accredit/documents/SourceText.h"
#include "accredit/host/MCApplicInfo4XML.h"
#include "accredit/host/MCQueryCancel.h"
#include "app/base/InputFile.h"
#include "app/base/Progress.h"

namespace app {

/// A summary as it is kept in a file, with all that was settled when it was learned.
///
/// The file is the PMML document that the library writes, with two additions in places that PMML
/// has for them: in every DataField the missing tokens, as values with the property "missing", and
/// in every Counts the missing data, as missingFreq, which totalFreq then includes.
struct StoredReference {
    MADistStats stats;
    MissingTokens missing;
    std::vector<std::uint64_t> missingCounts;  ///< Missing data of each variable, by slot.
    MCApplicInfo4XML application;              ///< What the header says.
};

/// A document may not be longer than this many MiB.
inline constexpr std::size_t kMaxDocumentMiB = 256;
inline constexpr std::size_t kMaxDocumentSize = kMaxDocumentMiB * 1'048'576;

/// The text of the file if it begins like a document, nothing if it does not; the path "-" is
/// standard input. `reading` says whether a file that is none will be read as data. Throws
/// InputError, also for a document that is too long, and Cancelled.
std::optional<SourceText> LoadDocument(const std::string& path, Reading reading, Progress& progress,
                                       MCQueryCancel& cancel);

/// The reference that a document holds. The columns named in `ignored` are not input variables of
/// its list.
///
/// Whatever is not such a document is refused with InputError and the place: one that is not well
/// formed; elements, attributes and values that the format above does not have; a field or a value
/// that stands twice; fields without statistics and statistics without field; margins that do not
/// ascend or leave gaps; frequencies that do not sum to the number of cases outside the library's
/// extension for those; summaries that contradict themselves. Throws UsageError if every column is
/// ignored.
StoredReference ReadReference(const SourceText& source,
                              const std::vector<std::string>& ignored = {});

/// The document that ReadReference reads; reading and writing it again gives the same text. Throws
/// InputError, which begins with `dataName`, for what a document cannot hold: it names the column
/// if that is a name, a value or a statistic of it. Throws UsageError for such a missing token.
std::string WriteReference(const StoredReference& reference, const std::string& dataName);

}  // namespace app
