#include "accredit/diststats/MAMerge.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "accredit/diststats/internal/SummaryMembers.h"
#include "accredit/host/MCMV.h"
#include "accredit/host/MCNumberEncoder.h"
#include "accredit/host/MCPMMLExporter.h"
#include "accredit/host/MCStringEncoder.h"
#include "accredit/host/MCVariable.h"

using MADetail::SummaryMembers;
using MCMTD_NAMESPACE::IMCEncoder;
using MCMTD_NAMESPACE::IMCVariable;
using MCMTD_NAMESPACE::MCNumberEncoder;
using MCMTD_NAMESPACE::MCStringEncoder;
using MCMTD_NAMESPACE::MCVariable;
using MCMTD_NAMESPACE::MCVarList;

namespace {

// Every whole number up to this one is a double of its own.
constexpr double kMaxWhole = 9007199254740992.0;

const IMCVariable& VariableAt(const MADistStats& stats, unsigned int slot) {
    return *stats.GetVarList().GetVarAt(stats.GetVarListIndex(slot));
}

const IMCEncoder& EncoderAt(const MADistStats& stats, unsigned int slot) {
    return *stats.GetVarList().GetEncoderAt(stats.GetVarListIndex(slot));
}

// The categories of both, and behind them one without a name, to which no value encodes, if cases
// need it.
class MergedEncoder : public IMCEncoder {
public:
    explicit MergedEncoder(int valueType) : mValueType(valueType) {}

    // The code of the category that another encoder has under this code, which is added if it is
    // new; nothing if that encoder does not give the code back for the value.
    std::optional<int> CodeOf(const IMCEncoder& encoder, int code) {
        if (mValueType == ValueTypeNumber) {
            const double number = encoder.DecodeNumber(code);
            if (encoder.EncodeNumber(number) != code) return std::nullopt;
            return mNumbers.AddCategory(number);
        }
        const std::string text = encoder.DecodeString(code);
        if (encoder.EncodeString(text) != code) return std::nullopt;
        return mTexts.AddCategory(text);
    }

    int AddNameless() {
        mHasNameless = true;
        return Named();
    }

    int GetValueType() const override { return mValueType; }
    int GetNumCategories() const override { return Named() + (mHasNameless ? 1 : 0); }
    double EncodeString(const std::string& value) const override {
        return mTexts.EncodeString(value);
    }
    double EncodeNumber(double value) const override { return mNumbers.EncodeNumber(value); }
    std::string DecodeString(int code) const override { return mTexts.DecodeString(code); }
    double DecodeNumber(int code) const override { return mNumbers.DecodeNumber(code); }

private:
    int Named() const { return mTexts.GetNumCategories() + mNumbers.GetNumCategories(); }

    int mValueType;
    MCStringEncoder mTexts;
    MCNumberEncoder mNumbers;
    bool mHasNameless = false;
};

// What becomes of the variable of one slot.
struct Part {
    std::optional<MergedEncoder> encoder;  // of a categorical variable
    std::vector<double> frequencies;
    VarSummary summary;
};

// Adds a frequency; false if a count would not be exact.
bool AddFrequency(double& sum, double more) {
    const bool areCounts = std::floor(sum) == sum && std::floor(more) == more;
    // The sum may be rounded to the largest count.
    const bool isExact = areCounts ? more <= kMaxWhole - sum || more == 0.0 || sum == 0.0
                                   : std::isfinite(sum + more);
    sum += more;
    return isExact;
}

MAMergeProblem AddFrequencies(std::vector<double>& sums, const std::vector<double>& more) {
    sums.resize(std::max(sums.size(), more.size()), 0.0);
    for (std::size_t i = 0; i < more.size(); ++i) {
        if (!AddFrequency(sums[i], more[i])) return MAMergeProblem::TooManyCases;
    }
    return MAMergeProblem::None;
}

// Whether both have the same categories under the same codes, which `merged` then has too.
bool HaveSameCodes(const IMCEncoder& first, const IMCEncoder& second, MergedEncoder& merged) {
    const int categories = std::max(first.GetNumCategories(), 0);
    if (std::max(second.GetNumCategories(), 0) != categories ||
        categories > MCPMMLExporter::kMaxCategories) {
        return false;
    }
    for (int code = 0; code < categories; ++code) {
        if (merged.CodeOf(first, code) != code || merged.CodeOf(second, code) != code) return false;
    }
    return true;
}

// Adds the categories of a summary and their frequencies, and to `nameless` those of other codes.
MAMergeProblem AddCategories(const MADistStats& stats, unsigned int slot, Part& part,
                             double& nameless) {
    const IMCEncoder& encoder = EncoderAt(stats, slot);
    const std::vector<double>& frequencies = stats.GetFrequencies(slot);
    const int categories = std::max(encoder.GetNumCategories(), 0);
    if (categories > MCPMMLExporter::kMaxCategories) return MAMergeProblem::TooManyCategories;
    const auto count = static_cast<std::size_t>(categories);
    for (std::size_t c = 0; c < std::max(count, frequencies.size()); ++c) {
        const double frequency = c < frequencies.size() ? frequencies[c] : 0.0;
        const std::optional<int> code =
            c < count ? part.encoder->CodeOf(encoder, static_cast<int>(c)) : std::nullopt;
        if (!code) {
            if (!AddFrequency(nameless, frequency)) return MAMergeProblem::TooManyCases;
            continue;
        }
        // A data pass leaves frequencies up to the highest code that it met.
        const auto index = static_cast<std::size_t>(*code);
        if (c < frequencies.size() && index >= part.frequencies.size()) {
            part.frequencies.resize(index + 1, 0.0);
        }
        if (c < frequencies.size() && !AddFrequency(part.frequencies[index], frequency)) {
            return MAMergeProblem::TooManyCases;
        }
    }
    return part.encoder->GetNumCategories() > MCPMMLExporter::kMaxCategories
               ? MAMergeProblem::TooManyCategories
               : MAMergeProblem::None;
}

MAMergeProblem MergeCategories(const MADistStats& first, unsigned int slot,
                               const MADistStats& second, unsigned int secondSlot, Part& part) {
    const int valueType = EncoderAt(first, slot).GetValueType();
    if (EncoderAt(second, secondSlot).GetValueType() != valueType) {
        return MAMergeProblem::OtherKind;
    }
    part.encoder.emplace(valueType);
    if (HaveSameCodes(EncoderAt(first, slot), EncoderAt(second, secondSlot), *part.encoder)) {
        // Codes that no category has are the same in both, too.
        part.frequencies = first.GetFrequencies(slot);
        return AddFrequencies(part.frequencies, second.GetFrequencies(secondSlot));
    }
    part.encoder.emplace(valueType);
    double nameless = 0.0;
    for (const auto& [stats, at] : {std::pair(&first, slot), std::pair(&second, secondSlot)}) {
        const MAMergeProblem problem = AddCategories(*stats, at, part, nameless);
        if (problem != MAMergeProblem::None) return problem;
    }
    if (nameless > 0.0) {
        const auto code = static_cast<std::size_t>(part.encoder->AddNameless());
        part.frequencies.resize(code + 1, 0.0);
        part.frequencies[code] = nameless;
    }
    return MAMergeProblem::None;
}

MAMergeProblem MergeBins(const MADistStats& first, unsigned int slot, const MADistStats& second,
                         unsigned int secondSlot, Part& part) {
    const std::vector<double>& more = second.GetFrequencies(secondSlot);
    part.frequencies = first.GetFrequencies(slot);
    if (first.GetCutPoints(slot) != second.GetCutPoints(secondSlot) ||
        part.frequencies.size() != more.size()) {
        return MAMergeProblem::OtherCutPoints;
    }
    return AddFrequencies(part.frequencies, more);
}

VarSummary SummaryAt(const MADistStats& stats, unsigned int slot) {
    VarSummary summary;
    summary.count = stats.GetNumberOfCases(slot);
    stats.GetMinMax(slot, summary.min, summary.max);
    stats.GetMeanStdDev(slot, summary.mean, summary.stdDev);
    return summary;
}

// The sum of squared deviations from the mean.
double Squares(const VarSummary& summary) {
    if (MCMV::IsMissing(summary.stdDev)) return 0.0;
    return summary.stdDev * summary.stdDev * static_cast<double>(summary.count - 1);
}

// A single case that was loaded may have a mean only.
double Extreme(double first, double second, bool secondIsBeyond) {
    if (MCMV::IsMissing(first)) return second;
    return secondIsBeyond && !MCMV::IsMissing(second) ? second : first;
}

// Of a categorical variable only the count is there.
VarSummary Moments(const VarSummary& first, const VarSummary& second) {
    if (second.count == 0) return first;
    if (first.count == 0) return second;
    VarSummary both;
    both.count = first.count + second.count;
    both.min = Extreme(first.min, second.min, second.min < first.min);
    both.max = Extreme(first.max, second.max, second.max > first.max);
    both.mean = MCMV::Missing();
    both.stdDev = MCMV::Missing();
    if (MCMV::IsMissing(first.mean) || MCMV::IsMissing(second.mean)) return both;
    const auto n = static_cast<double>(both.count);
    const double share = static_cast<double>(second.count) / n;
    const double d = second.mean - first.mean;
    both.mean = first.mean + d * share;
    const double squares =
        Squares(first) + Squares(second) + d * d * (static_cast<double>(first.count) * share);
    both.stdDev =
        both.max == both.min ? 0.0 : std::sqrt(squares / static_cast<double>(both.count - 1));
    return both;
}

MAMergeProblem MergeVariable(const MADistStats& first, unsigned int slot, const MADistStats& second,
                             unsigned int secondSlot, Part& part) {
    if (VariableAt(first, slot).GetMeasureLevel() !=
        VariableAt(second, secondSlot).GetMeasureLevel()) {
        return MAMergeProblem::OtherKind;
    }
    const MAMergeProblem problem = first.IsCategorical(slot)
                                       ? MergeCategories(first, slot, second, secondSlot, part)
                                       : MergeBins(first, slot, second, secondSlot, part);
    if (problem != MAMergeProblem::None) return problem;
    const VarSummary summary = SummaryAt(first, slot);
    const VarSummary more = SummaryAt(second, secondSlot);
    if (more.count > std::numeric_limits<unsigned long>::max() - summary.count) {
        return MAMergeProblem::TooManyCases;
    }
    part.summary = Moments(summary, more);
    return MAMergeProblem::None;
}

// The slot in `second` of each slot of `first`, -1 where there is none.
std::vector<int> Partners(const MADistStats& first, const MADistStats& second) {
    std::vector<int> slots(second.GetVarList().Size(), -1);
    for (unsigned int slot = 0; slot < second.GetVarCount(); ++slot) {
        slots[static_cast<std::size_t>(second.GetVarListIndex(slot))] = static_cast<int>(slot);
    }
    std::vector<int> partners;
    for (unsigned int slot = 0; slot < first.GetVarCount(); ++slot) {
        const std::string name = VariableAt(first, slot).GetName();
        if (slot < second.GetVarCount() && VariableAt(second, slot).GetName() == name) {
            partners.push_back(static_cast<int>(slot));
            continue;
        }
        const int position = second.GetVarList().FindVariable(name);
        partners.push_back(position < 0 ? -1 : slots[static_cast<std::size_t>(position)]);
    }
    return partners;
}

// The variables of the first, with the categories of both.
MCVarList ListOf(const MADistStats& first, const std::vector<Part>& parts) {
    const MCVarList& list = first.GetVarList();
    MCVarList merged;
    unsigned int slot = 0;
    for (int position = 0; position < static_cast<int>(list.Size()); ++position) {
        const IMCVariable& variable = *list.GetVarAt(position);
        const bool isInput = first.GetVarListIndex(slot) == position;
        const auto role = isInput ? IMCVariable::VariableRoleInput
                          : variable.GetRole() == IMCVariable::VariableRoleInput
                              ? IMCVariable::VariableRoleNone
                              : variable.GetRole();
        const Part* const part = isInput ? &parts[slot++] : nullptr;
        const bool hasEncoder = part && part->encoder;
        const MCVariable made(variable.GetName(), variable.GetMeasureLevel(), role,
                              hasEncoder ? part->encoder->GetNumCategories() : 0);
        hasEncoder ? merged.Add(made, *part->encoder) : merged.Add(made);
    }
    return merged;
}

MAMerged Refused(MAMergeProblem problem, int slot, int secondSlot) {
    return {{}, {}, problem, slot, secondSlot};
}

}  // namespace

MAMerged MAMergeDistStats(const MADistStats& first, const MADistStats& second) {
    if (first.GetVarCount() == 0) return {second, {}, MAMergeProblem::None};
    if (second.GetVarCount() == 0) return {first, {}, MAMergeProblem::None};
    std::vector<int> partners = Partners(first, second);
    std::set<int> found;
    for (unsigned int slot = 0; slot < first.GetVarCount(); ++slot) {
        if (partners[slot] < 0 || !found.insert(partners[slot]).second) {
            return Refused(MAMergeProblem::OtherVariables, static_cast<int>(slot), -1);
        }
    }
    for (unsigned int slot = 0; slot < second.GetVarCount(); ++slot) {
        if (found.count(static_cast<int>(slot)) == 0) {
            return Refused(MAMergeProblem::OtherVariables, -1, static_cast<int>(slot));
        }
    }
    std::vector<Part> parts(first.GetVarCount());
    for (unsigned int slot = 0; slot < first.GetVarCount(); ++slot) {
        const MAMergeProblem problem = MergeVariable(
            first, slot, second, static_cast<unsigned int>(partners[slot]), parts[slot]);
        if (problem != MAMergeProblem::None) {
            return Refused(problem, static_cast<int>(slot), partners[slot]);
        }
    }
    auto merged = std::make_unique<MADistStatsImp>(ListOf(first, parts), nullptr);
    for (unsigned int slot = 0; slot < first.GetVarCount(); ++slot) {
        SummaryMembers::CutPoints(*merged)[slot] = first.GetCutPoints(slot);
        SummaryMembers::Frequencies(*merged)[slot] = std::move(parts[slot].frequencies);
        SummaryMembers::Summaries(*merged)[slot] = parts[slot].summary;
    }
    return {MADistStats(merged.release()), std::move(partners), MAMergeProblem::None};
}
