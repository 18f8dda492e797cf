// A stored reference of any bytes: it is refused with its place, or it is a well-formed document
// which, written and read again, gives the same reference and from then on the same text.

#include <optional>

#include "SameSummary.h"
#include "WellFormed.h"
#include "accredit/documents/Contradictions.h"
#include "accredit/documents/Reference.h"

using fuzz::Require;
using MADocuments::ReadReference;
using MADocuments::Reference;
using MADocuments::WriteReference;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::optional<Reference> read;
    try {
        read = ReadReference(text);
    } catch (const MADocuments::DocumentError& error) {
        Require(error.Line() >= 1 && error.Column() >= 1, "a refusal names the place");
        return 0;
    }
    Require(MADocuments::BeginsLikeDocument(text), "what is read begins like a document");
    Require(fuzz::IsWellFormed(text), "what is read is well formed");

    for (unsigned int slot = 0; slot <= read->stats.GetVarCount(); ++slot) {
        MADocuments::FindContradiction(read->stats, slot);
    }
    const std::string written = WriteReference(*read);
    Require(fuzz::IsWellFormed(written), "what is written is well formed");
    const Reference again = ReadReference(written);
    Require(fuzz::SlotsOf(again.stats) == fuzz::SlotsOf(read->stats), "the numbers are kept");
    Require(
        again.missing.Texts() == read->missing.Texts() && again.namesMissing == read->namesMissing,
        "the missing tokens are kept");
    Require(again.uncounted == read->uncounted, "what is counted besides is kept");
    Require(WriteReference(again) == written, "a second time the same is written");
    return 0;
}
