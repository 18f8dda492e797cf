// A stored reference of any bytes: it is refused with its place, or it is a well-formed document
// which, written and read again, gives the same reference and from then on the same text.

#include "SameSummary.h"
#include "WellFormed.h"
#include "accredit/documents/StoredReference.h"
#include "app/base/Errors.h"

using fuzz::Require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::optional<app::StoredReference> read;
    try {
        read = app::ReadReference(app::SourceText("stored", text));
    } catch (const app::InputError& error) {
        unsigned long line = 0;
        unsigned long column = 0;
        const bool hasPlace = std::sscanf(error.what(), "stored:%lu:%lu: ", &line, &column) == 2;
        Require(hasPlace && line >= 1 && column >= 1, "a refusal names the place");
        return 0;
    }
    Require(fuzz::IsWellFormed(text), "what is read is well formed");

    const std::string written = app::WriteReference(*read, "f");
    Require(fuzz::IsWellFormed(written), "what is written is well formed");
    const app::StoredReference again = app::ReadReference(app::SourceText("written", written));
    Require(fuzz::SlotsOf(again.stats) == fuzz::SlotsOf(read->stats), "the numbers are kept");
    Require(again.missing.Texts() == read->missing.Texts(), "the missing tokens are kept");
    Require(again.missingCounts == read->missingCounts, "the missing data are kept");
    Require(app::WriteReference(again, "f") == written, "a second time the same is written");
    return 0;
}
