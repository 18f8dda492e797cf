#include "app/data/ColumnScan.h"

#include <algorithm>
#include <cmath>

#include "app/data/CellText.h"

namespace app {

namespace {

// Beyond so many cells that are neither, a column is searched for dates, or for numbers as
// spreadsheets show them, only as long as most of its texts are such.
constexpr std::uint64_t kMaxOdd = 100;
constexpr std::size_t kMaxWholeNumbers = 20;
constexpr std::size_t kLimitOfNumbers = 2048;

ShownCell CellAt(const CsvReader& reader, std::string_view text) {
    return {reader.FileName(), reader.RowLine(), std::string(text)};
}

}  // namespace

ColumnScan::ColumnScan(std::size_t distinctLimit)
    : mDistinctLimit(distinctLimit), mDistinct(std::min(distinctLimit, kLimitOfNumbers)) {}

void ColumnScan::Take(std::string_view field, std::string_view text, std::optional<double> number,
                      const CsvReader& reader) {
    ++mFacts.present;
    if (number) {
        TakeNumber(*number);
        mDistinct.Add(*number);
        if (reader.Delimiter() == ';' && mHasNoOtherPoints) TakePoint(text);
    } else {
        TakeText(text, reader);
        mDistinct.Add(field);
    }
    if (reader.Headings().size() > 1) return;
    for (std::size_t i = 0; i < kSearchedDelimiters.size(); ++i) {
        if (field.find(kSearchedDelimiters[i]) != std::string_view::npos) ++mFacts.delimiters[i];
    }
}

void ColumnScan::TakeNumber(double number) {
    if (!mHasFewWholeNumbers) return;
    const auto place = std::lower_bound(mWholeNumbers.begin(), mWholeNumbers.end(), number);
    if (place != mWholeNumbers.end() && *place == number) return;
    mHasFewWholeNumbers = std::trunc(number) == number && mWholeNumbers.size() < kMaxWholeNumbers;
    if (mHasFewWholeNumbers) mWholeNumbers.insert(place, number);
}

void ColumnScan::TakePoint(std::string_view number) {
    constexpr std::size_t kGroup = 3;
    if (number.front() == '-') number.remove_prefix(1);
    const std::size_t point = number.find('.');
    const std::size_t whole = std::min(point, number.size());
    const bool hasPoint = point != std::string_view::npos;
    mHasPoints = mHasPoints || hasPoint;
    mHasNoOtherPoints = whole > 0 && whole <= kGroup &&
                        (!hasPoint || (number.size() == whole + 1 + kGroup && number[0] != '0'));
}

void ColumnScan::TakeText(std::string_view text, const CsvReader& reader) {
    if (mFacts.noNumbers++ == 0) {
        mFacts.firstNoNumber = CellAt(reader, text);
        mDistinct.SetLimit(mDistinctLimit);
    } else if (mFacts.allNoNumbersAreOneText) {
        mFacts.allNoNumbersAreOneText = text == mFacts.firstNoNumber.text;
    }
    const auto isWorthIt = [&](std::uint64_t found) {
        const std::uint64_t others = mFacts.noNumbers - 1 - found;
        return others <= kMaxOdd || found > others;
    };
    // With a decimal comma, a number that has a point is one of another program.
    const bool hasPoint = ParseCell(text, false).has_value();
    if (isWorthIt(mFacts.spreadsheetNumbers) && (hasPoint || IsSpreadsheetNumber(text))) {
        if (mFacts.spreadsheetNumbers++ == 0) mFacts.firstSpreadsheetNumber = CellAt(reader, text);
        if (hasPoint) ++mFacts.points;
        if (ParseCell(text, true)) ++mFacts.decimalCommas;
        if (IsAmbiguousComma(text)) ++mFacts.ambiguousCommas;
    }
    if (isWorthIt(mFacts.dates) && IsDate(text)) ++mFacts.dates;
}

ColumnFacts ColumnScan::Facts() const {
    ColumnFacts facts = mFacts;
    facts.distinct = mDistinct.Count();
    facts.distinctIsExact = mDistinct.IsExact();
    facts.mayHaveThousands = mHasPoints && mHasNoOtherPoints;
    if (mHasFewWholeNumbers) facts.wholeNumbers = mWholeNumbers.size();
    return facts;
}

}  // namespace app
