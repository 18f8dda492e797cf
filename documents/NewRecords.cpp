#include "accredit/documents/NewRecords.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "accredit/accreditation/MAComparison.h"
#include "accredit/diststats/MADistStatsImp.h"
#include "accredit/diststats/MASummaryBuilder.h"
#include "accredit/documents/NumberText.h"
#include "accredit/documents/internal/EncoderWithOthers.h"
#include "accredit/host/MCMV.h"
#include "accredit/host/MCNumberEncoder.h"
#include "accredit/host/MCStringEncoder.h"
#include "accredit/host/MCVariable.h"
#include "accredit/host/XMLElement.h"

using MCCommon::MCStatus;
using MCMTD_NAMESPACE::IMCEncoder;
using MCMTD_NAMESPACE::IMCVariable;
using MCMTD_NAMESPACE::MCNumberEncoder;
using MCMTD_NAMESPACE::MCStringEncoder;
using MCMTD_NAMESPACE::MCVariable;
using MCMTD_NAMESPACE::MCVarList;
using MCXML_NAMESPACE::XMLElement;

namespace MADocuments {

namespace {

enum class Kind { Continuous, TextCategory, NumberCategory };

// What a value is counted as.
enum class Fate { Case, Missing, Unreadable, OtherCategory };

// An input variable of the reference, and what the records have of it.
struct Variable {
    std::size_t position;
    Kind kind;
    const IMCEncoder* reference;
    MCStringEncoder texts = {};
    MCNumberEncoder numbers = {};
    std::uint64_t missing = 0;
    std::uint64_t unreadable = 0;
    std::uint64_t others = 0;  // cases of categories without a name
    std::uint64_t firstUnreadable = 0;
    std::string firstUnreadableText = {};
    Fate fate = Fate::Case;  // of the value that is being added

    int NamedCategories() const { return texts.GetNumCategories() + numbers.GetNumCategories(); }
};

MCVariable CopyOf(const IMCVariable& variable, int categories) {
    return {variable.GetName(), variable.GetMeasureLevel(), variable.GetRole(), categories};
}

// The variables without encoders, which a data pass does not ask.
MCVarList BareList(const MCVarList& list) {
    MCVarList bare;
    for (int position = 0; position < static_cast<int>(list.Size()); ++position) {
        bare.Add(CopyOf(*list.GetVarAt(position), 0));
    }
    return bare;
}

// Whether a document can hold a text: it is UTF-8 without characters that XML does not have.
bool CanBeStored(const std::string& text) {
    const std::unique_ptr<XMLElement> element(XMLElement::Create("Value"));
    return element->SetAttribute("value", text);
}

double Uncounted(Variable& variable, Fate fate) {
    variable.fate = fate;
    return MCMV::Missing();
}

// Keeps the beginning of the first such text, if a document can hold it.
double Unreadable(Variable& variable, std::string_view text) {
    constexpr std::size_t kMaxShown = 40;
    if (variable.unreadable == 0) {
        std::size_t end = std::min(text.size(), kMaxShown);
        // No character is cut in two.
        while (end > 0 && end < text.size() &&
               (static_cast<unsigned char>(text[end]) >> 6U) == 2U) {
            --end;
        }
        variable.firstUnreadableText = text.substr(0, end);
        if (!CanBeStored(variable.firstUnreadableText)) variable.firstUnreadableText.clear();
    }
    return Uncounted(variable, Fate::Unreadable);
}

}  // namespace

std::vector<std::vector<double>> UsableCutPoints(const MADistStats& reference) {
    std::vector<std::vector<double>> usable;
    for (unsigned int slot = 0; slot < reference.GetVarCount(); ++slot) {
        usable.push_back(MACutPointsFor(reference, slot));
        const std::vector<double>& list = usable.back();
        const auto disorder = std::adjacent_find(
            list.begin(), list.end(), [](double left, double right) { return !(left < right); });
        if (disorder != list.end()) usable.back().clear();
    }
    return usable;
}

std::size_t CategoryBytes(const IMCEncoder& encoder) {
    std::size_t bytes = 0;
    for (int code = 0; code < encoder.GetNumCategories() && bytes <= kMaxCategoryBytes; ++code) {
        bytes += kCategorySize + encoder.DecodeString(code).size();
    }
    return bytes;
}

struct NewRecords::State {
    State(const Reference& reference, std::size_t maxBytes)
        : list(reference.stats.GetVarList()),
          missing(reference.missing),
          categoryBytes(maxBytes),
          builder(BareList(list), UsableCutPoints(reference.stats)),
          values(list.Size(), MCMV::Missing()) {
        for (unsigned int slot = 0; slot < reference.stats.GetVarCount(); ++slot) {
            const int position = reference.stats.GetVarListIndex(slot);
            const IMCEncoder& encoder = *list.GetEncoderAt(position);
            const Kind kind = !reference.stats.IsCategorical(slot) ? Kind::Continuous
                              : encoder.GetValueType() == IMCEncoder::ValueTypeNumber
                                  ? Kind::NumberCategory
                                  : Kind::TextCategory;
            if (kind != Kind::Continuous) referenceBytes += CategoryBytes(encoder);
            variables.push_back({static_cast<std::size_t>(position), kind, &encoder});
        }
        usedBytes = referenceBytes;
    }

    double Take(Variable& variable, const RecordValue& value);
    double TakeText(Variable& variable, std::string_view text);
    double TakeNumber(Variable& variable, double number);
    double TextCode(Variable& variable, const std::string& text);
    double NumberCode(Variable& variable, double number);
    bool HasRoomFor(std::size_t length);

    MCVarList list;
    MissingTokens missing;
    std::size_t categoryBytes;
    std::size_t referenceBytes = 0;
    std::size_t usedBytes = 0;
    bool hasNoRoom = false;
    MASummaryBuilder builder;
    std::vector<Variable> variables;
    std::vector<double> values;
};

// Once there is no room for one category there is none for any later one, so that those with a name
// are the first.
bool NewRecords::State::HasRoomFor(std::size_t length) {
    hasNoRoom = hasNoRoom || usedBytes + kCategorySize + length > categoryBytes;
    if (!hasNoRoom) usedBytes += kCategorySize + length;
    return !hasNoRoom;
}

double NewRecords::State::TextCode(Variable& variable, const std::string& text) {
    const double known = variable.texts.EncodeString(text);
    if (known >= 0.0) return known;
    if (variable.reference->EncodeString(text) < 0.0 &&
        !(CanBeStored(text) && HasRoomFor(text.size()))) {
        return Uncounted(variable, Fate::OtherCategory);
    }
    return variable.texts.AddCategory(text);
}

double NewRecords::State::NumberCode(Variable& variable, double number) {
    const double known = variable.numbers.EncodeNumber(number);
    if (known >= 0.0) return known;
    if (variable.reference->EncodeNumber(number) < 0.0 && !HasRoomFor(0)) {
        return Uncounted(variable, Fate::OtherCategory);
    }
    return variable.numbers.AddCategory(number);
}

double NewRecords::State::TakeNumber(Variable& variable, double number) {
    if (std::isnan(number) || MCMV::IsMissing(number)) return Uncounted(variable, Fate::Missing);
    if (variable.kind == Kind::TextCategory) return TextCode(variable, SpellNumber(number));
    if (std::isinf(number)) return Unreadable(variable, SpellNumber(number));
    return variable.kind == Kind::NumberCategory ? NumberCode(variable, number) : number;
}

double NewRecords::State::TakeText(Variable& variable, std::string_view text) {
    const std::string_view trimmed = TrimBlanks(text);
    if (missing.Contains(trimmed)) return Uncounted(variable, Fate::Missing);
    if (variable.kind == Kind::TextCategory) return TextCode(variable, std::string(text));
    const std::optional<double> number = ParseNumber(trimmed);
    return number ? TakeNumber(variable, *number) : Unreadable(variable, trimmed);
}

double NewRecords::State::Take(Variable& variable, const RecordValue& value) {
    variable.fate = Fate::Case;
    switch (value.GetKind()) {
        case RecordValue::Kind::Number:
            return TakeNumber(variable, value.Number());
        case RecordValue::Kind::Text:
            return TakeText(variable, value.Text());
        case RecordValue::Kind::None:
            break;
    }
    return Uncounted(variable, Fate::Missing);
}

NewRecords::NewRecords(const Reference& reference, std::size_t categoryBytes) {
    if (reference.stats.GetVarCount() == 0) {
        throw DocumentError("the reference has no variables", "read or learn one that has");
    }
    mState = std::make_unique<State>(reference, categoryBytes);
}

NewRecords::NewRecords(NewRecords&& other) noexcept = default;
NewRecords& NewRecords::operator=(NewRecords&& other) noexcept = default;
NewRecords::~NewRecords() = default;

MCStatus NewRecords::Add(const std::vector<RecordValue>& record) {
    State& state = *mState;
    if (record.size() != state.values.size()) return {MAStatusRecordSize, false};
    for (Variable& variable : state.variables) {
        state.values[variable.position] = state.Take(variable, record[variable.position]);
    }
    const MCStatus status = state.builder.Add(state.values);
    if (!status.IsOK()) return status;
    for (Variable& variable : state.variables) {
        if (variable.fate == Fate::Missing) ++variable.missing;
        if (variable.fate == Fate::Unreadable && ++variable.unreadable == 1) {
            variable.firstUnreadable = RecordCount();
        }
        if (variable.fate == Fate::OtherCategory) ++variable.others;
    }
    return {};
}

std::uint64_t NewRecords::RecordCount() const { return mState->builder.GetRecordCount(); }

namespace {

// The reference's list with the categories of the records.
MCVarList ListOf(const MCVarList& reference, const std::vector<Variable>& variables) {
    MCVarList list;
    auto next = variables.begin();
    for (int position = 0; position < static_cast<int>(reference.Size()); ++position) {
        const IMCVariable& variable = *reference.GetVarAt(position);
        const bool isInput =
            next != variables.end() && next->position == static_cast<std::size_t>(position);
        std::shared_ptr<IMCEncoder> encoder;
        if (isInput && next->kind == Kind::TextCategory) {
            encoder = std::make_shared<MCStringEncoder>(next->texts);
        } else if (isInput && next->kind == Kind::NumberCategory) {
            encoder = std::make_shared<MCNumberEncoder>(next->numbers);
        }
        if (encoder && next->others > 0) encoder = std::make_shared<EncoderWithOthers>(encoder);
        const int categories = encoder ? encoder->GetNumCategories() : 0;
        list.AddShared(std::make_shared<MCVariable>(CopyOf(variable, categories)), encoder);
        if (isInput) ++next;
    }
    return list;
}

}  // namespace

Reference NewRecords::Summary() const {
    const State& state = *mState;
    const MADistStats counted = state.builder.GetDistStats();
    auto stats = std::make_unique<MADistStatsImp>(ListOf(state.list, state.variables), nullptr);
    Reference summary;
    for (unsigned int slot = 0; slot < counted.GetVarCount(); ++slot) {
        const Variable& variable = state.variables[slot];
        UncountedData uncounted;
        uncounted.missing = variable.missing;
        if (variable.kind != Kind::TextCategory) uncounted.unreadable = variable.unreadable;
        if (variable.firstUnreadable > 0 && !variable.firstUnreadableText.empty()) {
            uncounted.firstUnreadableLine = variable.firstUnreadable;
            uncounted.firstUnreadableText = variable.firstUnreadableText;
        }
        double min = MCMV::Missing();
        double max = MCMV::Missing();
        double mean = MCMV::Missing();
        double deviation = MCMV::Missing();
        counted.GetMinMax(slot, min, max);
        counted.GetMeanStdDev(slot, mean, deviation);
        stats->SetSummStats(slot, counted.GetNumberOfCases(slot) + variable.others, min, max, mean,
                            deviation);
        std::vector<double> frequencies = counted.GetFrequencies(slot);
        if (variable.kind == Kind::Continuous) {
            stats->SetFreqs(slot, frequencies, counted.GetCutPoints(slot));
        } else {
            frequencies.resize(static_cast<std::size_t>(variable.NamedCategories()), 0.0);
            if (variable.others > 0) {
                uncounted.otherCategories = variable.NamedCategories();
                frequencies.push_back(static_cast<double>(variable.others));
            }
            stats->SetFreqs(slot, frequencies);
        }
        summary.uncounted.push_back(uncounted);
    }
    summary.stats = MADistStats(stats.release());
    summary.missing = state.missing;
    return summary;
}

void NewRecords::Clear() {
    State& state = *mState;
    state.builder.Clear();
    for (Variable& variable : state.variables) {
        variable = {variable.position, variable.kind, variable.reference};
    }
    state.usedBytes = state.referenceBytes;
    state.hasNoRoom = false;
}

}  // namespace MADocuments
