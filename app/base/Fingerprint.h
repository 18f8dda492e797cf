#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct XXH3_state_s;

namespace app {

/// Tells tables apart by a hash of all their cells: the same texts in the same places give the same
/// fingerprint, whatever stands between and around them in a file. It finds what is given twice by
/// accident, and is no protection against tables that are made to have the same one.
class Fingerprint {
public:
    /// Of no rows. Throws std::bad_alloc.
    Fingerprint();

    /// Adds a row of at least one cell.
    void AddRow(const std::vector<std::string_view>& cells);

    /// The same, faster, of a row as it stands in a file: cells without quotes and commas between
    /// them.
    void AddPlainRow(std::string_view row);

    /// The hash, XXH3 with 128 bits: "xxh128:" and 32 hexadecimal digits.
    std::string Text();

private:
    struct Free {
        void operator()(XXH3_state_s* state) const;
    };

    void AddCell(std::string_view cell);
    void Flush();

    std::unique_ptr<XXH3_state_s, Free> mState;
    std::string mRows;  // what has not been hashed yet
};

}  // namespace app
