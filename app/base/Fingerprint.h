#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/base/ByteHash.h"

namespace app {

/// Tells tables apart by a hash of all their cells: the same texts in the same places give the same
/// fingerprint, whatever stands between and around them in a file. It finds what is given twice by
/// accident, and is no protection against tables that are made to have the same one.
class Fingerprint {
public:
    /// Adds a row of at least one cell.
    void AddRow(const std::vector<std::string_view>& cells);

    /// The same, faster, of a row as it stands in a file: cells without quotes and commas between
    /// them.
    void AddPlainRow(std::string_view row);

    /// "xxh128:" and the hash, see ByteHash.
    std::string Text();

private:
    void AddCell(std::string_view cell);
    void Flush();

    ByteHash mHash;
    std::string mRows;  // what has not been hashed yet
};

}  // namespace app
