#include "app/data/ColumnScan.h"

#include <algorithm>
#include <cmath>

#include "app/data/CellText.h"

namespace app {

namespace {

// With more cells of another look a column is taken for what these are.
constexpr std::uint64_t kMaxOdd = 100;
constexpr std::size_t kMaxWholeNumbers = 20;

ShownCell CellAt(const CsvReader& reader, std::string_view text) {
    return {reader.FileName(), reader.RowLine(), std::string(text)};
}

}  // namespace

void ColumnScan::Take(std::string_view field, std::string_view text, std::optional<double> number,
                      const CsvReader& reader) {
    ++mFacts.present;
    if (number) {
        TakeNumber(*number);
    } else {
        TakeText(text, reader);
    }
    if (mDistinct) {
        mDistinct->Add(field);
        ++mFacts.distinctAmong;
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

void ColumnScan::TakeText(std::string_view text, const CsvReader& reader) {
    if (mFacts.noNumbers++ == 0) {
        mFacts.firstNoNumber = CellAt(reader, text);
        mDistinct = std::make_unique<DistinctCounter>(mDistinctLimit);
    } else if (mFacts.allNoNumbersAreOneText) {
        mFacts.allNoNumbersAreOneText = text == mFacts.firstNoNumber.text;
    }
    // With a decimal comma, a number that has a point is one of another program.
    if (mFacts.noNumbers - mFacts.spreadsheetNumbers <= kMaxOdd + 1 &&
        (IsSpreadsheetNumber(text) || ParseCell(text, false))) {
        if (mFacts.spreadsheetNumbers++ == 0) mFacts.firstSpreadsheetNumber = CellAt(reader, text);
        if (ParseCell(text, true)) ++mFacts.decimalCommas;
        if (IsAmbiguousComma(text)) ++mFacts.ambiguousCommas;
    }
    if (mFacts.present - mFacts.dates <= kMaxOdd + 1 && IsDate(text)) ++mFacts.dates;
}

ColumnFacts ColumnScan::Facts() const {
    ColumnFacts facts = mFacts;
    if (mDistinct) facts.distinct = mDistinct->Count();
    if (mHasFewWholeNumbers) facts.wholeNumbers = mWholeNumbers.size();
    return facts;
}

}  // namespace app
