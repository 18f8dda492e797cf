#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "accredit/diststats/MADistStats.h"
#include "accredit/documents/DocumentError.h"
#include "accredit/documents/MissingTokens.h"
#include "accredit/host/MCApplicInfo4XML.h"

/// @file
/// References and the documents that keep them.

/// Stored references: PMML documents read and written.
namespace MADocuments {

/// What new data is compared with: a summary, and all that was settled when it was learned.
struct Reference {
    /// The summary. Every variable of its list that is an input variable is compared.
    MADistStats stats;
    /// The texts that stand for a missing datum.
    MissingTokens missing;
    /// The number of missing data of each input variable, by slot.
    std::vector<std::uint64_t> missingCounts;
    /// What made the reference, and when.
    MCApplicInfo4XML application;
};

/// A document may not be longer than this many bytes.
inline constexpr std::size_t kMaxDocumentSize = 256 * std::size_t{1'048'576};

/// Whether a file that begins like this is meant to be an XML document, well formed or not: after a
/// byte-order mark and white space comes a declaration, a comment, a document type or the element
/// PMML, or the file ends within the first letters of one of these; or it begins with the
/// byte-order mark of UTF-16, which no data has.
bool BeginsLikeDocument(std::string_view beginning);

/// The reference that a document holds. Its list has the fields in their order, as input variables
/// but for those named in `ignored`.
///
/// The document is the one that the library writes, with two additions in places that PMML has for
/// them: in every DataField the missing tokens, as values with the property "missing", and in every
/// Counts the missing data, as missingFreq, which totalFreq then includes. Without them the tokens
/// are those of a default MissingTokens and the counts 0.
///
/// Whatever is not such a document is refused with DocumentError and the place: one that is longer
/// than kMaxDocumentSize or not well-formed XML in UTF-8; document types, processing instructions,
/// CDATA sections and elements nested more than 32 deep; elements, attributes and values that the
/// format does not have; a field or a value that stands twice; fields without statistics and
/// statistics without field; margins that do not ascend or leave gaps; frequencies that do not sum
/// to the number of cases outside the library's extension for those; summaries that contradict
/// themselves; with missing tokens, fields whose totals differ; all fields ignored. Time and memory
/// are bounded by the length. Throws std::bad_alloc.
Reference ReadReference(std::string_view document, const std::vector<std::string>& ignored = {});

/// The document that ReadReference reads; reading and writing it again gives the same text. Throws
/// DocumentError, without a place, for what a document cannot hold (MAFindExportProblem names the
/// variable), and std::bad_alloc.
std::string WriteReference(const Reference& reference);

}  // namespace MADocuments
