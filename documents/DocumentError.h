#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

/// @file
/// Why a document cannot be read or written.

namespace MADocuments {

/// A document is not one of a reference, or cannot hold one. The text is one line of UTF-8 that
/// says what is wrong; names and values of the document stand in it as they are, but for their
/// length.
class DocumentError : public std::runtime_error {
public:
    /// Something at this place of a document, both counted from 1; a column is a code point.
    DocumentError(std::size_t line, std::size_t column, const std::string& problem)
        : std::runtime_error(std::to_string(line) + ":" + std::to_string(column) + ": " + problem),
          mLine(line),
          mColumn(column) {}

    /// Something without a place.
    explicit DocumentError(const std::string& problem) : std::runtime_error(problem) {}

    /// The line, 0 if there is no place.
    std::size_t Line() const { return mLine; }

    /// The column, 0 if there is no place.
    std::size_t Column() const { return mColumn; }

private:
    std::size_t mLine = 0;
    std::size_t mColumn = 0;
};

}  // namespace MADocuments
