#include "app/commands/ReferenceFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "accredit/accreditation/MAAccreditor.h"
#include "accredit/accreditation/MAComparison.h"
#include "accredit/documents/Contradictions.h"
#include "accredit/documents/NumberText.h"
#include "accredit/host/IMCEncoder.h"
#include "app/base/Characters.h"
#include "app/base/Errors.h"
#include "app/base/Printable.h"

using MADocuments::DocumentError;
using MADocuments::kMaxDocumentSize;
using MADocuments::Reference;
using MADocuments::VariableName;
using MCCommon::MCStatus;
using MCMTD_NAMESPACE::IMCEncoder;
using MCMTD_NAMESPACE::IMCVariable;
using MCMTD_NAMESPACE::MCVarList;

namespace app {

namespace {

// Whether a text is as Shortened gives it, so that it can be shown as it is.
bool IsShownText(std::string_view text) {
    constexpr std::size_t kWidth = 40;
    if (DisplayWidth(text) > kWidth) return false;
    while (!text.empty()) {
        const auto [shown, hidden] = FirstCluster(text);
        if (hidden > 0) return false;
        text.remove_prefix(shown);
    }
    return true;
}

bool IsCategory(const IMCEncoder& encoder, std::string_view token) {
    if (encoder.GetValueType() == IMCEncoder::ValueTypeNumber) {
        const std::optional<double> number = MADocuments::ParseNumber(token);
        return number && encoder.EncodeNumber(*number) >= 0.0;
    }
    for (int code = 0; code < encoder.GetNumCategories(); ++code) {
        const std::string category = encoder.DecodeString(code);
        if (MADocuments::TrimBlanks(category) == token) return true;
    }
    return false;
}

// The slot of the first variable of which a token is a category, or -1. The empty text, which is
// always missing, is none.
int FindCategory(const MADistStats& stats, std::string_view token) {
    for (unsigned int slot = 0; slot < stats.GetVarCount() && !token.empty(); ++slot) {
        if (!stats.IsCategorical(slot)) continue;
        if (IsCategory(*stats.GetVarList().GetEncoderAt(stats.GetVarListIndex(slot)), token)) {
            return static_cast<int>(slot);
        }
    }
    return -1;
}

constexpr const char* kOtherKind = "values and their kind";

bool HasInput(const MCVarList& list, const std::string& name) {
    const int position = list.FindVariable(name);
    return position >= 0 && list.GetVariableRole(position) == IMCVariable::VariableRoleInput;
}

// What of a variable differs between a reference and a summary that has it, or an empty text.
std::string Difference(const MADistStats& reference, unsigned int slot, const MADistStats& stats,
                       unsigned int newSlot) {
    if (!reference.IsCategorical(slot)) {
        // What has no bins can be put into any if it is one value or none.
        const bool hasBins = !MACutPointsFor(reference, slot).empty();
        return hasBins && !MACellsOf(reference, slot, stats, newSlot) ? "cut points" : "";
    }
    const auto type = [](const MADistStats& of, unsigned int at) {
        return of.GetVarList().GetEncoderAt(of.GetVarListIndex(at))->GetValueType();
    };
    return type(reference, slot) == type(stats, newSlot) ? "" : kOtherKind;
}

}  // namespace

std::optional<Document> LoadDocument(InputFile& file) {
    constexpr std::size_t kPiece = std::size_t{1} << 16U;
    std::string text;
    std::size_t got = kPiece;
    // A document that is too long is read no further than to where the reader can tell.
    while (got == kPiece && text.size() <= kMaxDocumentSize) {
        text.resize(text.size() + kPiece);
        got = file.Read(text.data() + text.size() - kPiece, kPiece);
        text.resize(text.size() - kPiece + got);
        if (!MADocuments::BeginsLikeDocument(text)) {
            file.PutBack(std::move(text));
            return std::nullopt;
        }
    }
    return Document{file.Name(), std::move(text)};
}

Document LoadReference(InputFile& file) {
    std::optional<Document> document = LoadDocument(file);
    if (document) return std::move(*document);
    throw InputError(file.Name() +
                     ": this is not a stored reference; 'accredit learn' makes one of data");
}

Reference ReferenceIn(const Document& document, const std::vector<std::string>& ignored) {
    try {
        Reference reference = MADocuments::ReadReference(document.text, ignored);
        // An application may have stored any text.
        for (MADocuments::UncountedData& data : reference.uncounted) {
            if (!IsShownText(data.firstUnreadableText)) {
                data.firstUnreadableText = Shortened(data.firstUnreadableText);
            }
        }
        return reference;
    } catch (const DocumentError& error) {
        // Names and values of the document stand in the text as they are.
        throw InputError(document.fileName + (error.Line() == 0 ? ": " : ":") +
                         Printable(error.what()));
    }
}

void SettleMissing(const DataOptions& data, const std::string& settled, Reference& reference) {
    const std::string& option = reference.namesMissing ? data.settledOption : data.settledKind;
    if (!option.empty()) throw UsageError(fmt::format("{}: {}", option, settled));
    if (reference.namesMissing) return;
    const std::vector<std::string>& named = data.onlyMissing ? *data.onlyMissing : data.missing;
    for (const std::string& token : named) {
        const int slot = FindCategory(reference.stats, MADocuments::TrimBlanks(token));
        if (slot < 0) continue;
        throw UsageError(
            fmt::format("{}: \"{}\" is a category of the reference's column \"{}\", and cannot "
                        "stand for a missing "
                        "value as well",
                        data.onlyMissing ? "--only-missing" : "--missing", Shortened(token),
                        Shortened(VariableName(reference.stats, static_cast<unsigned int>(slot)))));
    }
    std::vector<std::string> texts = data.onlyMissing ? named : reference.missing.Texts();
    if (!data.onlyMissing) texts.insert(texts.end(), named.begin(), named.end());
    reference.missing = MADocuments::MissingTokens::Only(texts);
    // From here on a summary must have been made with the same.
    reference.namesMissing = data.onlyMissing || !named.empty();
}

std::vector<std::string> ContradictionsIn(const Reference& reference, const std::string& fileName) {
    std::vector<std::string> remarks;
    const MADistStats& stats = reference.stats;
    const auto isCounted = [](const MADocuments::UncountedData& data) {
        return data.missing.has_value();
    };
    const bool anyIsCounted =
        std::any_of(reference.uncounted.begin(), reference.uncounted.end(), isCounted);
    for (unsigned int slot = 0; slot < stats.GetVarCount(); ++slot) {
        if (anyIsCounted && !isCounted(UncountedAt(reference, slot))) {
            remarks.push_back(fmt::format(
                "{}: column \"{}\": its missing values are not counted, and so not compared, "
                "while those of other columns are",
                fileName, Shortened(VariableName(stats, slot))));
        }
        const std::string contradiction = MADocuments::FindContradiction(stats, slot);
        if (contradiction.empty()) continue;
        remarks.push_back(
            fmt::format("{}: column \"{}\": {}; no pass over data gives such a summary, so it was "
                        "changed or put "
                        "together wrongly: make it again from the data",
                        fileName, Shortened(VariableName(stats, slot)), contradiction));
    }
    return remarks;
}

std::vector<std::string> NamesOf(const MCVarList& list) {
    std::vector<std::string> names;
    for (unsigned int i = 0; i < list.Size(); ++i) {
        names.push_back(list.GetVarAt(static_cast<int>(i))->GetName());
    }
    return names;
}

void RequireBinsOf(const Reference& reference, const Reference& summary,
                   const std::string& fileName) {
    const auto refuse = [&fileName](const std::string& difference) {
        throw InputError(fmt::format(
            "{}: {} are not the reference's; 'accredit learn --bins-of REFERENCE' summarises the "
            "data so that it can be compared",
            fileName, difference));
    };
    const MCVarList& list = reference.stats.GetVarList();
    std::vector<int> slots;
    const MCStatus status = MAAccreditor::MatchVariables(list, summary.stats.GetVarList(), slots);
    for (unsigned int slot = 0; slot < slots.size(); ++slot) {
        const std::string name = list.GetVarAt(reference.stats.GetVarListIndex(slot))->GetName();
        std::string difference;
        if (slots[slot] >= 0) {
            difference = Difference(reference.stats, slot, summary.stats,
                                    static_cast<unsigned int>(slots[slot]));
        } else if (!status.IsOK() && HasInput(summary.stats.GetVarList(), name)) {
            difference = kOtherKind;
        }
        // A variable that is not there is a finding, and no obstacle.
        if (difference.empty()) continue;
        refuse(fmt::format("column \"{}\": its {}", Shortened(name), difference));
    }
    const bool areNamed = reference.namesMissing && summary.namesMissing;
    if (areNamed && summary.missing.Texts() != reference.missing.Texts()) {
        refuse("its missing values");
    }
}

}  // namespace app
