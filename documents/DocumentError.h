#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

#include "accredit/host/AccreditExport.h"

/// @file
/// Why a document cannot be read or written.

namespace MADocuments {

/// What to do about a document in which something stands that no exporter writes.
inline constexpr const char* kRestoreDocument =
    "restore the document from a copy, or write it again";

/// A document is not one of a reference, or cannot hold one. All texts are one line of UTF-8; names
/// and values of the document stand in them as they are, but for their length.
class ACCREDIT_EXPORT DocumentError : public std::runtime_error {
public:
    /// Something at this place of a document, both counted from 1; a column is a code point.
    DocumentError(std::size_t line, std::size_t column, const std::string& problem,
                  const std::string& remedy = kRestoreDocument);

    /// Something without a place.
    DocumentError(const std::string& problem, const std::string& remedy);

    /// A copy, which cannot fail.
    DocumentError(const DocumentError& other) noexcept;
    /// The same.
    DocumentError& operator=(const DocumentError& other) noexcept;
    ~DocumentError() override;

    /// The line, 0 if there is no place.
    std::size_t Line() const { return mLine; }

    /// The column, 0 if there is no place.
    std::size_t Column() const { return mColumn; }

    /// What is wrong. The text of what() has the place before it, "line:column: ", and "; " and the
    /// remedy behind it.
    std::string Problem() const;

    /// What to do about it.
    std::string Remedy() const;

private:
    // Copies of an exception must not fail, so the parts are kept as places in its one text.
    std::size_t mLine = 0;
    std::size_t mColumn = 0;
    std::size_t mProblemBegin = 0;
    std::size_t mProblemSize = 0;
};

}  // namespace MADocuments
