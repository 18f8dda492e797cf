#include "app/sql/Figures.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string_view>
#include <utility>

#include "accredit/documents/NewRecords.h"
#include "accredit/documents/NumberText.h"
#include "accredit/host/MCMV.h"
#include "accredit/host/MCNumberEncoder.h"
#include "accredit/host/MCStringEncoder.h"
#include "app/data/CellText.h"

using MADocuments::kCategorySize;
using MADocuments::MissingTokens;
using MADocuments::TrimBlanks;
using MCMTD_NAMESPACE::IMCEncoder;
using MCMTD_NAMESPACE::MCNumberEncoder;
using MCMTD_NAMESPACE::MCStringEncoder;

namespace app {

namespace {

// From here on several whole numbers are one double.
constexpr double kTooLarge = 9007199254740992.0;

std::optional<double> NumberIn(const Key& key) {
    return key.number ? key.number : ParseCell(TrimBlanks(key.text), false);
}

void KeepFirst(const std::string& text, std::string& first) {
    if (first.empty() || text < first) first = text;
}

}  // namespace

NumberFigures::NumberFigures(const ColumnAnswer& answer, std::uint64_t rows,
                             const MissingTokens& missing)
    : mAnswer(answer), mCount(answer.count), mMinimum(answer.minimum), mMaximum(answer.maximum) {
    for (const Group& group : answer.groups) {
        if (missing.Contains(TrimBlanks(group.key.text))) continue;
        if (const std::optional<double> number = NumberIn(group.key)) {
            mSpelled[*number] += group.count;
            mCount += group.count;
            mMinimum = std::min(mMinimum, *number);
            mMaximum = std::max(mMaximum, *number);
        } else {
            mUnreadable += group.count;
            KeepFirst(group.key.text, mExample);
        }
    }
    mMissing = rows - mCount - mUnreadable;
}

double NumberFigures::Scaled(double number) const {
    if (mAnswer.scale.IsNone()) return number;
    return std::abs(number) >= mAnswer.scale.Floor() ? number * mAnswer.scale.Factor() : 0.0;
}

double NumberFigures::Unscaled(double number) const {
    return std::ldexp(number, -mAnswer.scale.exponent);
}

std::vector<double> NumbersAmong(const MissingTokens& missing) {
    std::vector<double> numbers;
    for (const std::string& token : missing.Texts()) {
        if (const auto number = MADocuments::ParseNumber(token)) numbers.push_back(*number);
    }
    return numbers;
}

bool HasBadNumbers(const ColumnAnswer& answer) {
    const bool isInGroups = std::any_of(
        answer.groups.begin(), answer.groups.end(),
        [](const Group& group) { return group.key.number && !std::isfinite(*group.key.number); });
    return isInGroups ||
           (answer.count > 0 && (!std::isfinite(answer.minimum) || !std::isfinite(answer.maximum) ||
                                 std::isnan(answer.sum)));
}

bool NumberFigures::NeedsScale() const {
    // MariaDB answers 0 for a sum that overflows.
    constexpr double kLarge = 0x1p400;
    constexpr double kSmall = 0x1p-400;
    const double largest = std::max(std::abs(mMinimum), std::abs(mMaximum));
    return mCount > 0 && mAnswer.scale.IsNone() &&
           (!std::isfinite(mAnswer.sum) || largest >= kLarge ||
            (largest < kSmall && largest > 0.0));
}

double NumberFigures::Center() const {
    if (mCount == 0) return 0.0;
    double sum = mAnswer.sum;
    for (const auto& [number, count] : mSpelled) sum += Scaled(number) * static_cast<double>(count);
    const double center =
        std::clamp(sum / static_cast<double>(mCount), Scaled(mMinimum), Scaled(mMaximum));
    // The squares of what is scaled are not to vanish.
    constexpr double kFloor = 0x1p-400;
    return mAnswer.scale.IsNone() || std::abs(center) >= kFloor ? center : 0.0;
}

bool NumberFigures::IsConsistent() const {
    return std::is_sorted(mAnswer.atMost.begin(), mAnswer.atMost.end()) &&
           (mAnswer.atMost.empty() || mAnswer.atMost.back() <= mAnswer.count);
}

std::vector<double> NumberFigures::Bins(const std::vector<double>& cutPoints) const {
    std::vector<double> bins(cutPoints.size() + 1, 0.0);
    std::uint64_t below = 0;
    for (std::size_t i = 0; i < cutPoints.size(); ++i) {
        const std::uint64_t atMost = i < mAnswer.atMost.size() ? mAnswer.atMost[i] : 0;
        bins[i] = static_cast<double>(atMost - below);
        below = atMost;
    }
    bins.back() = static_cast<double>(mAnswer.count - below);
    for (const auto& [number, count] : mSpelled) {
        const auto bin = std::lower_bound(cutPoints.begin(), cutPoints.end(), number);
        bins[static_cast<std::size_t>(bin - cutPoints.begin())] += static_cast<double>(count);
    }
    return bins;
}

double NumberFigures::Mean() const {
    if (mCount == 0) return MCMV::Missing();
    double deviation = mAnswer.deviation;
    for (const auto& [number, count] : mSpelled) {
        deviation += (Scaled(number) - mAnswer.center) * static_cast<double>(count);
    }
    const double mean = Unscaled(mAnswer.center + deviation / static_cast<double>(mCount));
    return std::clamp(mean, mMinimum, mMaximum);
}

double NumberFigures::Deviation() const {
    if (mCount < 2) return MCMV::Missing();
    if (mMinimum == mMaximum) return 0.0;
    double deviation = mAnswer.deviation;
    double square = mAnswer.square;
    for (const auto& [number, count] : mSpelled) {
        const double difference = Scaled(number) - mAnswer.center;
        deviation += difference * static_cast<double>(count);
        square += difference * difference * static_cast<double>(count);
    }
    const auto n = static_cast<double>(mCount);
    const double squares = std::max(0.0, square - deviation * deviation / n);
    // As large as that, the squares overflow in a pass over the values, too.
    if (std::isinf(std::ldexp(squares, -2 * mAnswer.scale.exponent))) {
        return std::numeric_limits<double>::infinity();
    }
    return Unscaled(std::sqrt(squares / (n - 1.0)));
}

CategoryFigures::CategoryFigures(const ColumnAnswer& answer, bool areNumbers,
                                 const MissingTokens& missing)
    : mAreNumbers(areNumbers) {
    for (const Group& group : answer.groups) {
        if (missing.Contains(TrimBlanks(group.key.text))) continue;
        if (!areNumbers) {
            mTexts[group.key.text] += group.count;
        } else if (const std::optional<double> number = NumberIn(group.key)) {
            mNumbers[*number] += group.count;
            mHasTooLargeNumbers = mHasTooLargeNumbers || std::abs(*number) >= kTooLarge;
        } else {
            mUnreadable += group.count;
            KeepFirst(group.key.text, mExample);
            continue;
        }
        mCount += group.count;
    }
}

std::size_t CategoryFigures::BytesWithout(const IMCEncoder* reference) const {
    std::size_t bytes = 0;
    for (const auto& [text, count] : mTexts) {
        if (!reference || reference->EncodeString(text) < 0.0) bytes += kCategorySize + text.size();
    }
    for (const auto& [number, count] : mNumbers) {
        if (!reference || reference->EncodeNumber(number) < 0.0) bytes += kCategorySize;
    }
    return bytes;
}

void CategoryFigures::SpellBooleansLike(const IMCEncoder& reference) {
    constexpr std::array<std::pair<const char*, const char*>, 8> kSpellings = {{
        {"true", "false"},
        {"True", "False"},
        {"TRUE", "FALSE"},
        {"t", "f"},
        {"1", "0"},
        {"yes", "no"},
        {"Y", "N"},
        {"y", "n"},
    }};
    const auto* const known =
        std::find_if(kSpellings.begin(), kSpellings.end(), [&](const auto& spelling) {
            return reference.EncodeString(spelling.first) >= 0.0 ||
                   reference.EncodeString(spelling.second) >= 0.0;
        });
    if (known == kSpellings.end()) return;
    std::map<std::string, std::uint64_t> spelled;
    for (const auto& [text, count] : mTexts) {
        const bool isTrue = text == "true" || text == "t" || text == "1";
        spelled[isTrue ? known->first : known->second] += count;
    }
    mTexts = std::move(spelled);
}

std::shared_ptr<IMCEncoder> CategoryFigures::Encoder() const {
    if (mAreNumbers) {
        auto encoder = std::make_shared<MCNumberEncoder>();
        for (const auto& [number, count] : mNumbers) encoder->AddCategory(number);
        return encoder;
    }
    auto encoder = std::make_shared<MCStringEncoder>();
    for (const auto& [text, count] : mTexts) encoder->AddCategory(text);
    return encoder;
}

std::vector<double> CategoryFigures::Frequencies() const {
    std::vector<double> frequencies;
    for (const auto& [text, count] : mTexts) frequencies.push_back(static_cast<double>(count));
    for (const auto& [number, count] : mNumbers) frequencies.push_back(static_cast<double>(count));
    return frequencies;
}

}  // namespace app
