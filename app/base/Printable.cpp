#include "app/base/Printable.h"

#include <fmt/format.h>

#include <algorithm>

namespace app {

namespace {

bool IsContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

// Whether this character has no width, changes the direction of writing, or ends a line: U+200B to
// U+200F, U+2028 to U+202E, U+2066 to U+2069, and the byte-order mark. A name with them could
// pass for another.
bool IsInvisible(std::string_view character) {
    if (character == "\xEF\xBB\xBF") return true;
    if (character.size() != 3) return false;
    const std::string_view begin = character.substr(0, 2);
    const auto last = static_cast<unsigned char>(character[2]);
    if (begin == "\xE2\x80")
        return (last >= 0x8B && last <= 0x8F) || (last >= 0xA8 && last <= 0xAE);
    return begin == "\xE2\x81" && last >= 0xA6 && last <= 0xA9;
}

// The length in bytes of the printable UTF-8 character that `text` begins with; 0 if it begins with
// a control or invisible character or with bytes that are not UTF-8. Table 3-7 of the Unicode
// Standard gives the ranges of the second byte.
std::size_t PrintableLength(std::string_view text) {
    const auto first = static_cast<unsigned char>(text[0]);
    if (first < 0x80) return first < 0x20 || first == 0x7F ? 0 : 1;
    if (first < 0xC2 || first > 0xF4) return 0;
    const std::size_t length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    if (text.size() < length) return 0;
    const std::string_view rest = text.substr(1, length - 1);
    if (!std::all_of(rest.begin(), rest.end(), IsContinuation)) return 0;
    const auto second = static_cast<unsigned char>(text[1]);
    const bool control = first == 0xC2 && second < 0xA0;
    const bool overlong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
    const bool surrogate = first == 0xED && second >= 0xA0;
    const bool beyond = first == 0xF4 && second >= 0x90;
    return control || IsInvisible(text.substr(0, length)) || overlong || surrogate || beyond
               ? 0
               : length;
}

std::string Escape(char byte) {
    switch (byte) {
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        default:
            return fmt::format("\\x{:02X}", static_cast<unsigned char>(byte));
    }
}

}  // namespace

std::string Printable(std::string_view text) {
    std::string shown;
    while (!text.empty()) {
        const std::size_t length = PrintableLength(text);
        if (length == 0) {
            shown += Escape(text[0]);
        } else {
            shown += text.substr(0, length);
        }
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return shown;
}

std::string Shortened(std::string_view text) {
    constexpr std::size_t kShown = 40;
    const std::string shown = Printable(text);
    const std::string_view first = FirstCodePoints(shown, kShown);
    return std::string(first) + (first.size() < shown.size() ? "..." : "");
}

std::size_t CountCodePoints(std::string_view text) {
    return text.size() -
           static_cast<std::size_t>(std::count_if(text.begin(), text.end(), IsContinuation));
}

std::string_view FirstCodePoints(std::string_view text, std::size_t count) {
    std::size_t end = 0;
    for (; end < text.size(); ++end) {
        if (!IsContinuation(text[end]) && count-- == 0) break;
    }
    return text.substr(0, end);
}

}  // namespace app
