#include "app/commands/ReferenceFile.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "app/base/Errors.h"
#include "app/base/Printable.h"

using MADocuments::DocumentError;
using MADocuments::kMaxDocumentSize;
using MADocuments::Reference;

namespace app {

std::optional<Document> LoadDocument(const std::string& path, Reading reading, Progress& progress,
                                     MCQueryCancel& cancel) {
    constexpr std::size_t kPiece = std::size_t{1} << 16U;
    InputFile file(path, reading, progress, cancel);
    std::string text;
    std::size_t got = kPiece;
    // A document that is too long is read no further than to where the reader can tell.
    while (got == kPiece && text.size() <= kMaxDocumentSize) {
        text.resize(text.size() + kPiece);
        got = file.Read(text.data() + text.size() - kPiece, kPiece);
        text.resize(text.size() - kPiece + got);
        if (!MADocuments::BeginsLikeDocument(text)) return std::nullopt;
        // What has begun like a document is worth the memory for all of it.
        text.reserve(static_cast<std::size_t>(
                         std::min<std::uint64_t>(file.Size().value_or(0), kMaxDocumentSize)) +
                     kPiece);
    }
    return Document{file.Name(), std::move(text)};
}

Reference ReferenceIn(const Document& document, const std::vector<std::string>& ignored) {
    try {
        return MADocuments::ReadReference(document.text, ignored);
    } catch (const DocumentError& error) {
        // Names and values of the document stand in the text as they are.
        throw InputError(document.fileName + (error.Line() == 0 ? ": " : ":") +
                         Printable(error.what()));
    }
}

}  // namespace app
