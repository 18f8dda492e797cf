// A stored reference of any bytes: it is refused with its place, or it is a well-formed document
// which, written and read again, gives the same reference and from then on the same text. Merged
// with itself it has every case twice, or is refused.

#include <optional>

#include "SameSummary.h"
#include "WellFormed.h"
#include "accredit/documents/Contradictions.h"
#include "accredit/documents/Merge.h"
#include "accredit/documents/Reference.h"

using fuzz::Require;
using MADocuments::ReadReference;
using MADocuments::Reference;
using MADocuments::WriteReference;

namespace {

void CheckMerged(const Reference& read) {
    Reference same = read;
    same.sources.clear();
    try {
        const Reference both = MADocuments::Merge(read, same);
        for (unsigned int slot = 0; slot < read.stats.GetVarCount(); ++slot) {
            Require(both.stats.GetNumberOfCases(slot) == 2 * read.stats.GetNumberOfCases(slot),
                    "cases are added up");
        }
        Require(ReadReference(WriteReference(both)).sources == read.sources, "sources are kept");
    } catch (const MADocuments::DocumentError& error) {
        Require(error.Line() == 0, "what cannot be merged or written has no place");
    }
}

}  // namespace

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
    Require(again.sources == read->sources, "the sources are kept");
    Require(WriteReference(again) == written, "a second time the same is written");
    CheckMerged(*read);
    return 0;
}
