#include "app/data/RowSplitter.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

#include "app/data/CellText.h"
#include "app/data/ShortNumber.h"

namespace app {

namespace {

constexpr std::size_t kMiB = 1'048'576;
constexpr std::size_t kMaxFields = 1'000'000;
// For so many fields, or numbers, memory is taken first.
constexpr std::size_t kLeastRoom = 1024;
constexpr const char* kNulByte = "a NUL byte, this is not a text file in UTF-8";
constexpr const char* kQuoteWithin =
    "a quote in a field that does not begin with one; CSV has such a field in quotes, and its "
    "own quotes doubled";

bool IsLineEnd(char byte) { return byte == '\n' || byte == '\r'; }

}  // namespace

RowSplitter::RowSplitter(const RowFormat& format, CsvPiece& piece)
    : mFormat(format),
      mPiece(piece),
      mMaxFields(format.columns.value_or(kMaxFields)),
      mEnd(piece.bytes.data() + piece.end),
      mStops({format.delimiter, '\n', '\r', '"', '\0'}),
      mBlock(piece.bytes.data() + piece.begin),
      mFound(mStops.Find(mBlock)) {
    piece.fieldCount = 0;
    piece.rows.clear();
    piece.error.reset();
}

// The end of the file, and of what has been read, is a stop too.
inline const char* RowSplitter::NextStop() {
    while (mFound == 0) {
        mBlock += kBlock;
        mFound = mStops.Find(mBlock);
    }
    const char* const stop = mBlock + __builtin_ctzll(mFound);
    mFound &= mFound - 1;
    return stop;
}

void RowSplitter::PassStopsBefore(const char* at) {
    const auto offset = static_cast<std::size_t>(at - mBlock);
    if (offset < kBlock) {
        mFound &= ~std::uint64_t{0} << offset;
    } else {
        mBlock = at;
        mFound = mStops.Find(at);
    }
}

bool RowSplitter::FindRow() {
    const bool blankLinesAreRows = mFormat.columns == 1;
    const char* at = Text() + mPiece.begin;
    for (; at != mEnd && IsLineEnd(*at); ++at) {
        const bool endsPair = *at == '\n' && mPiece.followsCarriageReturn;
        if (!endsPair) {
            if (mPiece.followsLineEnd && blankLinesAreRows) break;
            mPiece.followsLineEnd = true;
            ++mPiece.lineEnds;
        }
        mPiece.followsCarriageReturn = *at == '\r';
    }
    mPiece.begin = static_cast<std::size_t>(at - Text());
    mPiece.followsLineEnd = false;
    mPiece.followsCarriageReturn = false;
    PassStopsBefore(at);
    return at != mEnd;
}

bool RowSplitter::SplitRow() {
    if (mPiece.error || !FindRow()) return false;
    mFirstField = mPiece.fieldCount;
    UseRoom(mFirstField);
    mLine = mPiece.lineEnds;
    mHasQuotes = false;
    if (!SplitFields()) return false;
    if (mFormat.columns && FieldCount() < mMaxFields) {
        return Fail(mLine, FieldCount() - 1,
                    fmt::format("the row ends here, the heading has {} columns", mMaxFields));
    }
    mPiece.fieldCount = FieldsSoFar();
    AddNumbers();
    CsvPiece::Row& row = mPiece.rows.emplace_back();
    row.line = mLine;
    row.hasQuotes = mHasQuotes;
    return true;
}

bool RowSplitter::SplitFields() {
    const char* begin = Text() + mPiece.begin;
    const char delimiter = mFormat.delimiter;
    for (;;) {
        const char* stop = NextStop();
        if (*stop == delimiter) {
            if (!AddField(begin, stop)) return FailFurtherFields();
            begin = stop + 1;
            continue;
        }
        if (*stop == '"' && stop == begin) {
            stop = SplitQuoted(stop);
            if (!stop) return false;
        } else if (IsIncomplete(stop)) {
            return FailTooLong();
        } else if (!AddField(begin, stop)) {
            return FailFurtherFields();
        } else if (!EndsField(*stop)) {
            return Fail(mPiece.lineEnds, FieldCount() - 1, *stop == '"' ? kQuoteWithin : kNulByte);
        }
        if (*stop != delimiter) {
            mPiece.begin = static_cast<std::size_t>(stop - Text());
            return true;
        }
        begin = stop + 1;
    }
}

// Gives the end of the field that begins with this quote; null if it is malformed.
const char* RowSplitter::SplitQuoted(const char* quote) {
    const char* const begin = quote + 1;
    const char* const closing = FindClosingQuote(begin);
    if (!closing) {
        FailUnclosed();
        return nullptr;
    }
    if (!AddField(begin, closing)) {
        FailFurtherFields();
        return nullptr;
    }
    if (mHasNul) {
        Fail(mPiece.lineEnds, FieldCount() - 1, kNulByte);
        return nullptr;
    }
    mPiece.lineEnds += mLineEnds;
    const char* const end = closing + 1;
    if (!EndsField(*end)) {
        Fail(mPiece.lineEnds, FieldCount() - 1, "text behind the closing quote");
        return nullptr;
    }
    if (mHasDoubled) Undouble(mField[-1]);
    mHasQuotes = true;
    PassStopsBefore(end + 1);
    return end;
}

// Null if there is none.
const char* RowSplitter::FindClosingQuote(const char* begin) {
    mHasDoubled = mHasNul = false;
    mLineEnds = 0;
    for (;;) {
        const char* const at = NextStop();
        if (at >= mEnd) return nullptr;
        switch (*at) {
            case '"':
                if (IsIncomplete(at + 1)) return nullptr;
                if (at[1] != '"') return at;
                mHasDoubled = true;
                NextStop();
                break;
            case '\n':
                if (at == begin || at[-1] != '\r') ++mLineEnds;
                break;
            case '\r':
                ++mLineEnds;
                break;
            case '\0':
                mHasNul = true;
                break;
            default:
                break;
        }
    }
}

inline bool RowSplitter::AddField(const char* begin, const char* end) {
    if (mField == mRoom && !MakeRoom()) return false;
    mField->begin = static_cast<std::uint32_t>(begin - Text());
    mField->size = static_cast<std::uint32_t>(end - begin);
    ++mField;
    return true;
}

void RowSplitter::UseRoom(std::size_t fieldsSoFar) {
    std::vector<CsvPiece::Field>& fields = mPiece.fields;
    mField = fields.data() + fieldsSoFar;
    mRoom = fields.data() + std::min(fields.size(), mFirstField + mMaxFields);
}

// For one more field at least. False if the row must not have one.
bool RowSplitter::MakeRoom() {
    if (FieldCount() == mMaxFields) return false;
    const std::size_t soFar = FieldsSoFar();
    mPiece.fields.resize(std::max(kLeastRoom, 2 * soFar));
    UseRoom(soFar);
    return true;
}

// Done in place: fields only become shorter.
void RowSplitter::Undouble(CsvPiece::Field& field) {
    char* const begin = mPiece.bytes.data() + field.begin;
    char* to = begin;
    for (std::size_t i = 0; i < field.size; ++i) {
        *to++ = begin[i];
        if (begin[i] == '"') ++i;
    }
    field.size = static_cast<std::uint32_t>(to - begin);
}

void RowSplitter::AddNumbers() {
    const std::size_t first = mPiece.rows.size() * mFormat.numbers.size();
    const std::size_t end = first + mFormat.numbers.size();
    if (mPiece.numbers.size() < end) mPiece.numbers.resize(std::max(kLeastRoom, 2 * end));
    const CsvPiece::Field* const fields = mPiece.fields.data() + mFirstField;
    const char point = mFormat.decimalComma ? ',' : '.';
    double* number = mPiece.numbers.data() + first;
    for (const std::size_t place : mFormat.numbers) {
        const CsvPiece::Field field = fields[place];
        *number = ShortNumber(Text() + field.begin, field.size, point);
        if (std::isnan(*number) && field.size > 0) {
            *number = NumberIn(mPiece.Text(field), mFormat.decimalComma);
        }
        ++number;
    }
}

bool RowSplitter::Fail(std::uint32_t line, std::size_t place, std::string problem) {
    mPiece.error = {line, place, std::move(problem)};
    return false;
}

bool RowSplitter::FailFurtherFields() {
    return Fail(
        mLine, mMaxFields,
        fmt::format("the row goes on, {} {}",
                    mMaxFields == 1 ? "1 column is" : fmt::format("{} columns are", mMaxFields),
                    mFormat.columns ? "all that the heading has" : "the most that are read"));
}

bool RowSplitter::FailUnclosed() {
    if (!mPiece.endsFile) return FailTooLong();
    return Fail(mPiece.lineEnds, FieldCount(), "the quote at its beginning is not closed");
}

bool RowSplitter::FailTooLong() {
    return Fail(
        mLine, FieldCount(),
        fmt::format("the row is longer than {} MiB; is a quote not closed?", kMaxRowSize / kMiB));
}

}  // namespace app
