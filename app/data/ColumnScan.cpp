#include "app/data/ColumnScan.h"

#include <algorithm>
#include <cmath>

#include "accredit/diststats/MACutPoints.h"
#include "accredit/documents/NumberText.h"
#include "app/data/CellText.h"

namespace app {

namespace {

// Beyond so many cells that are neither, a column is searched for dates, or for numbers as
// spreadsheets show them, only as long as most of its texts are such.
constexpr std::uint64_t kMaxOdd = 100;
constexpr std::size_t kMaxWholeNumbers = 20;
constexpr std::size_t kLimitOfNumbers = 2048;

ShownCell CellAt(const CsvReader* reader, std::string_view text) {
    if (!reader) return {"", 0, std::string(text)};
    return {reader->FileName(), reader->RowLine(), std::string(text)};
}

}  // namespace

ColumnScan::ColumnScan(std::size_t distinctLimit)
    : mDistinctLimit(distinctLimit), mDistinct(std::min(distinctLimit, kLimitOfNumbers)) {}

void ColumnScan::Take(std::string_view field, std::string_view text, double number,
                      const CsvReader& reader) {
    ++mFacts.present;
    if (!std::isnan(number)) {
        mMoments.AddValue(number);
        if (mDistinct.Add(number)) TakeNumber(number);
        if (reader.Delimiter() == ';' && mHasNoOtherPoints) TakePoint(text);
    } else {
        TakeText(text, 1, &reader);
        mDistinct.Add(field);
    }
    if (reader.Headings().size() > 1) return;
    for (std::size_t i = 0; i < kSearchedDelimiters.size(); ++i) {
        if (field.find(kSearchedDelimiters[i]) != std::string_view::npos) ++mFacts.delimiters[i];
    }
}

void ColumnScan::TakeGroup(std::string_view text, std::optional<double> number,
                           std::uint64_t count) {
    mFacts.present += count;
    if (number) {
        if (mDistinct.Add(*number)) TakeNumber(*number);
    } else {
        TakeText(MADocuments::TrimBlanks(text), count, nullptr);
        mDistinct.Add(text);
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

void ColumnScan::TakeText(std::string_view text, std::uint64_t count, const CsvReader* reader) {
    const bool isFirst = mFacts.noNumbers == 0;
    mFacts.noNumbers += count;
    if (isFirst) {
        mFacts.firstNoNumber = CellAt(reader, text);
        mDistinct.SetLimit(mDistinctLimit);
    } else if (mFacts.allNoNumbersAreOneText) {
        mFacts.allNoNumbersAreOneText = text == mFacts.firstNoNumber.text;
    }
    const auto isWorthIt = [&](std::uint64_t found) {
        const std::uint64_t others = mFacts.noNumbers - count - found;
        return others <= kMaxOdd || found > others;
    };
    if (isWorthIt(mFacts.spreadsheetNumbers)) TakeSpreadsheetNumber(text, count, reader);
    if (isWorthIt(mFacts.dates) && IsDate(text)) mFacts.dates += count;
}

// If it is one.
void ColumnScan::TakeSpreadsheetNumber(std::string_view text, std::uint64_t count,
                                       const CsvReader* reader) {
    // With a decimal comma, a number that has a point is one of another program.
    const bool hasPoint = ParseCell(text, false).has_value();
    if (!hasPoint && !IsSpreadsheetNumber(text)) return;
    if (mFacts.spreadsheetNumbers == 0) mFacts.firstSpreadsheetNumber = CellAt(reader, text);
    mFacts.spreadsheetNumbers += count;
    if (hasPoint) mFacts.points += count;
    if (ParseCell(text, true)) mFacts.decimalCommas += count;
    if (IsAmbiguousComma(text)) mFacts.ambiguousCommas += count;
}

ColumnFacts ColumnScan::Facts() const {
    ColumnFacts facts = mFacts;
    facts.distinct = mDistinct.Count();
    facts.distinctIsExact = mDistinct.IsExact();
    facts.mayHaveThousands = mHasPoints && mHasNoOtherPoints;
    if (mHasFewWholeNumbers) facts.wholeNumbers = mWholeNumbers.size();
    return facts;
}

std::vector<double> ColumnScan::CutPoints() const {
    VarSummary moments = mMoments;
    moments.Finish();
    return MAComputeCutPoints(moments.mean, moments.stdDev);
}

}  // namespace app
