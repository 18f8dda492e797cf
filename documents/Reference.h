#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "accredit/diststats/MADistStats.h"
#include "accredit/documents/DocumentError.h"
#include "accredit/documents/MissingTokens.h"
#include "accredit/host/AccreditExport.h"
#include "accredit/host/MCApplicInfo4XML.h"

/// @file
/// References and the documents that keep them.

/// Stored references: PMML documents read and written.
namespace MADocuments {

/// What the data of a variable holds besides its cases.
struct UncountedData {
    /// The number of missing data; nothing if it is not known.
    std::optional<std::uint64_t> missing;
    /// The number of data that are no numbers, though the variable's are; nothing if it is not
    /// known or if the variable's data are texts.
    std::optional<std::uint64_t> unreadable;
    /// The line, from 1, on which the first of these stands, 0 if there is none.
    std::uint64_t firstUnreadableLine = 0;
    /// What the first of these is, shortened and fit to be shown.
    std::string firstUnreadableText = {};
    /// The code of the category that stands for all those of new data that were too many to be kept
    /// by name, -1 if there is none. It is the last of those that the reference lacks.
    int otherCategories = -1;
};

/// Whether all of it is the same.
ACCREDIT_EXPORT bool operator==(const UncountedData& left, const UncountedData& right);

/// What new data is compared with: a summary, and all that was settled when it was learned. New
/// data that was summarised with the bins of a reference is one, too.
struct Reference {
    /// The summary. Every variable of its list that is an input variable is compared.
    MADistStats stats;
    /// The texts that stand for a missing datum.
    MissingTokens missing;
    /// Whether the document names them. That of a summary which an application exports by itself
    /// names none.
    bool namesMissing = true;
    /// What is known of each input variable besides, by slot.
    std::vector<UncountedData> uncounted;
    /// What tells apart the data that the summary was made of: texts that are not empty, each once,
    /// such as a fingerprint of each file. Summaries with a source in common are not merged. None
    /// if nothing is known.
    std::vector<std::string> sources;
    /// What made the reference, and when.
    MCApplicInfo4XML application;
};

/// The name of the variable that has this slot, which must be there.
ACCREDIT_EXPORT std::string VariableName(const MADistStats& stats, unsigned int slot);

/// What is known of a slot besides its cases; nothing where `uncounted` does not reach.
ACCREDIT_EXPORT UncountedData UncountedAt(const Reference& reference, unsigned int slot);

/// The slot of the first variable that has one of the tokens, blanks around it aside, as a category
/// of text, -1 if there is none. A document cannot name tokens that are categories.
ACCREDIT_EXPORT int FindMissingCategory(const MADistStats& stats, const MissingTokens& missing);

/// A document may not be longer than this many bytes.
inline constexpr std::size_t kMaxDocumentSize = 256 * std::size_t{1'048'576};

/// Whether a file that begins like this is meant to be an XML document, well formed or not: after a
/// byte-order mark and white space comes a declaration, a comment, a document type or the element
/// PMML, or the file ends within the first letters of one of these; or it begins with the
/// byte-order mark of UTF-16 and a tag.
ACCREDIT_EXPORT bool BeginsLikeDocument(std::string_view beginning);

/// The reference that a document holds. Its list has the fields in their order, as input variables
/// but for those named in `ignored`.
///
/// The document is the one that the library writes, with additions in places that PMML has for
/// them: in every DataField the missing tokens, as values with the property "missing"; in every
/// Counts the missing data as missingFreq and the unreadable ones as invalidFreq, both part of
/// totalFreq; behind the statistics an extension "newData" with the first unreadable datum and the
/// cases of categories that were not kept, of the fields that have them; and behind that an
/// extension "sources" with the sources. Without missingFreq nothing is known of a field's missing
/// and unreadable data. Where no tokens are named, `missing` has those of a default MissingTokens
/// that are no categories of the document, blanks aside.
///
/// Every summary that MADistStats::ExportAsXML writes in no more than kMaxDocumentSize is read, and
/// holds what it held, but for three things. A number of cases above 2^53 is the nearest double. A
/// categorical variable has at least one frequency for each category; where there are more, because
/// codes were counted that no value has, IMCVariable::GetNumCategories tells their number, and that
/// of the encoder is smaller. Cut points of a categorical variable are not written.
/// FindContradiction finds summaries that no data has.
///
/// Whatever is not such a document is refused with DocumentError and the place: one that is longer
/// than kMaxDocumentSize or not well-formed XML in UTF-8; document types, processing instructions,
/// CDATA sections and elements nested more than 32 deep; elements, attributes and values that the
/// format does not have; a field or a value that stands twice; fields without statistics and
/// statistics without field; margins that do not ascend or leave gaps; frequencies that do not sum
/// to the number of cases outside the library's extension for those; summary values that
/// MADistStatsImp::SetSummStats refuses, or that it does not look at and makes missing; tokens that
/// are categories; totals that differ among the fields with missingFreq; all fields ignored.
/// Time and memory are bounded by the length. Throws std::bad_alloc.
ACCREDIT_EXPORT Reference ReadReference(std::string_view document,
                                        const std::vector<std::string>& ignored = {});

/// The document that ReadReference reads; reading and writing it again gives the same text. Throws
/// DocumentError, without a place, for what a document cannot hold (MAFindExportProblem names the
/// variable) and for what ReadReference would refuse, such as tokens that are categories, and
/// std::bad_alloc.
ACCREDIT_EXPORT std::string WriteReference(const Reference& reference);

}  // namespace MADocuments
