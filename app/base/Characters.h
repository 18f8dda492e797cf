#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace app {

/// The first character of a text.
struct Character {
    std::int32_t code;   ///< Its code point, -1 for a byte that does not belong to any in UTF-8.
    std::size_t length;  ///< In bytes, 1 for such a byte.
};

/// What `text`, which is not empty, begins with.
Character FirstCharacter(std::string_view text);

/// Whether all of the text is UTF-8.
bool IsUtf8(std::string_view text);

/// The first character of a text together with the marks that stand on it.
struct Cluster {
    std::size_t shown;   ///< So many bytes may be shown as they are,
    std::size_t hidden;  ///< and so many behind these must be escaped.
};

/// What `text`, which is not empty, begins with. To be escaped are bytes that are not UTF-8,
/// controls, private and unassigned characters, those without ink or width, all blanks but the
/// space, and what would let two texts look the same: characters that Unicode's form NFC writes in
/// another way, and marks that stand on nothing or repeat the one before. Takes bounded time,
/// whatever the length of the text.
Cluster FirstCluster(std::string_view text);

/// The columns that `text` takes on a terminal: 2 for a wide character, 0 for a mark. The text
/// needs no escaping.
std::size_t DisplayWidth(std::string_view text);

/// Whether this is the sign of a currency.
bool IsCurrencySign(std::int32_t code);

/// Whether a letter of the text belongs to a script that is written from right to left.
bool HasRightToLeft(std::string_view text);

}  // namespace app
