#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "app/data/ByteSet.h"
#include "app/data/CsvPiece.h"

namespace app {

/// Splits a piece of a file into rows and fields as CsvReader describes them, up to the first row
/// that is malformed. Keeps to its piece, so that several pieces can be split at the same time.
class RowSplitter {
public:
    /// Takes away what has been found in the piece. Both must outlive this.
    RowSplitter(const RowFormat& format, CsvPiece& piece);

    /// Goes to the first byte of the next row, false if there is none in the piece. A blank line
    /// that is a row begins with its line end.
    bool FindRow();

    /// Splits the row behind what has been split. False at the end of the piece, and if the row is
    /// malformed, which the piece then says.
    bool SplitRow();

    /// Splits all rows that are left.
    void SplitRows() {
        while (SplitRow()) continue;
    }

private:
    const char* NextStop();
    void PassStopsBefore(const char* at);
    bool SplitFields();
    const char* SplitQuoted(const char* quote);
    const char* FindClosingQuote(const char* begin);
    bool AddField(const char* begin, const char* end);
    void UseRoom(std::size_t fieldsSoFar);
    bool MakeRoom();
    void Undouble(CsvPiece::Field& field);
    void AddNumbers();
    const char* Text() const { return mPiece.bytes.data(); }
    bool EndsField(char byte) const {
        return byte == mFormat.delimiter || byte == '\n' || byte == '\r';
    }
    bool IsIncomplete(const char* at) const { return at >= mEnd && !mPiece.endsFile; }
    std::size_t FieldCount() const { return FieldsSoFar() - mFirstField; }
    std::size_t FieldsSoFar() const {
        return static_cast<std::size_t>(mField - mPiece.fields.data());
    }
    bool Fail(std::uint32_t line, std::size_t place, std::string problem);
    bool FailFurtherFields();
    bool FailUnclosed();
    bool FailTooLong();

    const RowFormat& mFormat;
    CsvPiece& mPiece;
    const std::size_t mMaxFields;
    const char* const mEnd;
    // The bytes at which an unquoted field ends, or must not go on: in a block of the text a bit
    // for each that has not been passed.
    const ByteSet<5> mStops;
    const char* mBlock;
    std::uint64_t mFound;

    // Of the row.
    std::size_t mFirstField = 0;
    CsvPiece::Field* mField = nullptr;  // the next one
    CsvPiece::Field* mRoom = nullptr;   // the end of those that may follow
    std::uint32_t mLine = 0;
    bool mHasQuotes = false;
    // Of the field in quotes.
    bool mHasDoubled = false;
    bool mHasNul = false;
    std::uint32_t mLineEnds = 0;
};

}  // namespace app
