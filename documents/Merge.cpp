#include "accredit/documents/Merge.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <string_view>
#include <utility>

#include "accredit/diststats/MAMerge.h"
#include "accredit/documents/internal/Element.h"

using MCMTD_NAMESPACE::IMCEncoder;

namespace MADocuments {

namespace {

constexpr const char* kSameBins = "summarise all parts with the bins of the same reference";

[[noreturn]] void Refuse(const MAMerged& merged, const Reference& first, const Reference& second) {
    const std::string name =
        merged.slot >= 0 ? VariableName(first.stats, static_cast<unsigned int>(merged.slot))
                         : VariableName(second.stats, static_cast<unsigned int>(merged.secondSlot));
    const std::string variable = "the variable \"" + Shortened(name) + "\"";
    switch (merged.problem) {
        case MAMergeProblem::OtherVariables:
            throw DocumentError(std::string("only the ") + (merged.slot < 0 ? "second" : "first") +
                                    " of the two has " + variable,
                                "summarise parts that have the same columns");
        case MAMergeProblem::OtherKind:
            throw DocumentError(variable + " is of another kind in one of the two", kSameBins);
        case MAMergeProblem::OtherCutPoints:
            throw DocumentError("the cut points of " + variable + " are not the same in both",
                                kSameBins);
        case MAMergeProblem::TooManyCategories:
            throw DocumentError(variable + " has too many categories in both together",
                                "leave the variable out");
        default:
            throw DocumentError(variable + " has too many cases in both together to be counted",
                                "keep the summaries apart");
    }
}

// A document has all counts as doubles, of which every whole number up to this one is one.
constexpr std::uint64_t kMaxCount = std::uint64_t{1} << 53U;

// Nothing if one of the counts is not known.
std::optional<std::uint64_t> Sum(std::optional<std::uint64_t> first,
                                 std::optional<std::uint64_t> second) {
    if (!first || !second) return std::nullopt;
    if (*first > kMaxCount || *second > kMaxCount - *first) {
        throw DocumentError(
            "there are too many missing or unreadable data in both together to be counted",
            "keep the summaries apart");
    }
    return *first + *second;
}

// The code of the category without a name, which merging puts behind all others; -1 if there is
// none.
int NamelessCategory(const MADistStats& stats, unsigned int slot) {
    if (!stats.IsCategorical(slot)) return -1;
    const IMCEncoder& encoder = *stats.GetVarList().GetEncoderAt(stats.GetVarListIndex(slot));
    const int last = encoder.GetNumCategories() - 1;
    if (last < 0) return -1;
    const double code = encoder.GetValueType() == IMCEncoder::ValueTypeNumber
                            ? encoder.EncodeNumber(encoder.DecodeNumber(last))
                            : encoder.EncodeString(encoder.DecodeString(last));
    return code == last ? -1 : last;
}

void RequireOtherSources(const Reference& first, const Reference& second) {
    const std::set<std::string_view> sources(second.sources.begin(), second.sources.end());
    for (const std::string& source : first.sources) {
        if (sources.count(source) == 0) continue;
        throw DocumentError("both were made of the same data, " + Shortened(source),
                            "leave one of them out");
    }
}

MissingTokens CommonTokens(const MissingTokens& first, const MissingTokens& second) {
    std::vector<std::string> texts = first.Texts();
    texts.erase(
        std::remove_if(texts.begin(), texts.end(),
                       [&second](const std::string& text) { return !second.Contains(text); }),
        texts.end());
    return MissingTokens::Only(texts);
}

}  // namespace

Reference Merge(Reference first, const Reference& second) {
    if (second.stats.GetVarCount() == 0) return first;
    if (first.stats.GetVarCount() == 0) return second;
    RequireOtherSources(first, second);
    if (first.namesMissing != second.namesMissing ||
        (first.namesMissing && first.missing.Texts() != second.missing.Texts())) {
        throw DocumentError("the missing values of the two are not the same", kSameBins);
    }
    MAMerged merged = MAMergeDistStats(first.stats, second.stats);
    if (merged.problem != MAMergeProblem::None) Refuse(merged, first, second);
    std::vector<UncountedData> uncounted;
    for (unsigned int slot = 0; slot < merged.stats.GetVarCount(); ++slot) {
        UncountedData data = UncountedAt(first, slot);
        const UncountedData more =
            UncountedAt(second, static_cast<unsigned int>(merged.secondSlots[slot]));
        data.missing = Sum(data.missing, more.missing);
        data.unreadable = Sum(data.unreadable, more.unreadable);
        if (data.firstUnreadableLine == 0) {
            data.firstUnreadableLine = more.firstUnreadableLine;
            data.firstUnreadableText = more.firstUnreadableText;
        }
        data.otherCategories = NamelessCategory(merged.stats, slot);
        uncounted.push_back(std::move(data));
    }
    first.stats = std::move(merged.stats);
    first.uncounted = std::move(uncounted);
    if (!first.namesMissing) first.missing = CommonTokens(first.missing, second.missing);
    first.sources.insert(first.sources.end(), second.sources.begin(), second.sources.end());
    return first;
}

}  // namespace MADocuments
