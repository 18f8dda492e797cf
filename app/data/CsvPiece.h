#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// @file
/// What passes through the hands of those who read a file of comma-separated values: a piece of its
/// text, and the rows that are found in it.

namespace app {

/// No row is longer than this, its line end aside.
inline constexpr std::size_t kMaxRowSize = std::size_t{16} << 20U;

/// How the rows of a file are written, and what is wanted of them.
struct RowFormat {
    char delimiter = ',';
    bool decimalComma = false;
    /// So many fields every row has. Nothing while the heading is read, which may have any number.
    std::optional<std::size_t> columns = {};
    /// The places of the fields that are to be read as numbers, from 0.
    std::vector<std::size_t> numbers = {};
};

/// A piece of the text of a file, which begins and ends between rows, and what is in it. Places are
/// counted from the first of its bytes.
struct CsvPiece {
    /// A field, without its quotes.
    struct Field {
        std::uint32_t begin;
        std::uint32_t size;
    };

    struct Row {
        std::uint32_t line;  ///< The line ends of the piece before the row.
        bool hasQuotes;
    };

    struct Error {
        std::uint32_t line;
        std::size_t place;  ///< Of the field in its row, from 0.
        std::string problem;
    };

    std::string_view Text(const Field& field) const {
        return {bytes.data() + field.begin, field.size};
    }

    /// What has not been split yet.
    std::string_view Rest() const { return {bytes.data() + begin, end - begin}; }

    /// Behind the text so many bytes can be read as are looked at together, a line end first.
    std::vector<char> bytes;
    /// Where what has not been split yet is.
    std::size_t begin = 0;
    std::size_t end = 0;
    /// So many bytes have been read; those behind the end belong to the next piece.
    std::size_t read = 0;
    bool endsFile = false;
    /// Whether the byte before the text was a line end, which belongs to the row before it, and
    /// whether it was a carriage return.
    bool followsLineEnd = false;
    bool followsCarriageReturn = false;

    /// The fields of all rows, row by row, and their number. What else the vector holds is room.
    std::vector<Field> fields;
    std::size_t fieldCount = 0;
    std::vector<Row> rows;
    /// The numbers of all rows, row by row in the order of RowFormat::numbers; NaN for no number.
    /// What else the vector holds is room.
    std::vector<double> numbers;
    /// The line ends that have been passed.
    std::uint32_t lineEnds = 0;
    /// What is wrong with the row behind the last one.
    std::optional<Error> error;
};

}  // namespace app
