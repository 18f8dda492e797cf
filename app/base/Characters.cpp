#include "app/base/Characters.h"

#include <utf8proc.h>

#include <algorithm>
#include <array>

namespace app {

namespace {

// The characters of one cluster. More marks than these cannot be told apart by the eye.
constexpr std::size_t kMaxCharacters = 12;
using Codes = std::array<std::int32_t, kMaxCharacters>;

bool IsAscii(char byte) { return static_cast<unsigned char>(byte) < 0x80; }

// These belong to letters, marks or symbols for Unicode, but leave their place empty: the braille
// pattern without dots, two hieroglyphic blanks, the filler of Khitan, the null notehead.
bool IsWithoutInk(std::int32_t code) {
    constexpr std::array<std::int32_t, 5> kBlank = {0x2800, 0x13441, 0x13442, 0x16FE4, 0x1D159};
    return std::find(std::begin(kBlank), std::end(kBlank), code) != std::end(kBlank);
}

bool IsHidden(std::int32_t code) {
    if (code < 0 || IsWithoutInk(code) || utf8proc_get_property(code)->ignorable) return true;
    switch (utf8proc_category(code)) {
        case UTF8PROC_CATEGORY_CC:
        case UTF8PROC_CATEGORY_CF:
        case UTF8PROC_CATEGORY_CS:
        case UTF8PROC_CATEGORY_CO:
        case UTF8PROC_CATEGORY_CN:
        case UTF8PROC_CATEGORY_ZL:
        case UTF8PROC_CATEGORY_ZP:
            return true;
        case UTF8PROC_CATEGORY_ZS:
            return code != ' ';
        default:
            return false;
    }
}

// Whether this is drawn onto the character before it.
bool IsMark(std::int32_t code) {
    const auto boundClass = utf8proc_get_property(code)->boundclass;
    return boundClass == UTF8PROC_BOUNDCLASS_EXTEND ||
           boundClass == UTF8PROC_BOUNDCLASS_SPACINGMARK;
}

// Whether the characters, which stand in `text`, are in form NFC. No character becomes more than
// four when it is taken apart. With room enough the library allocates nothing.
bool IsComposed(std::string_view text, const Codes& codes, std::size_t count) {
    constexpr auto kForm = static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE);
    std::array<std::int32_t, 4 * kMaxCharacters> composed{};
    const auto room = static_cast<utf8proc_ssize_t>(composed.size());
    const auto parts = utf8proc_decompose(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                          static_cast<utf8proc_ssize_t>(text.size()),
                                          composed.data(), room, kForm);
    if (parts < 0 || parts > room) return false;
    const auto length = utf8proc_normalize_utf32(composed.data(), parts, kForm);
    return length == static_cast<utf8proc_ssize_t>(count) &&
           std::equal(composed.begin(), composed.begin() + length, codes.begin());
}

// Whether the last of these characters can be shown if all before it are; they stand in `text`.
bool CanBeShown(std::string_view text, const Codes& codes, std::size_t count) {
    const std::int32_t last = codes[count - 1];
    if (IsHidden(last)) return false;
    if (count == 1 && last < 0x80) return true;
    if (IsMark(last)) {
        if (count == 1 || last == codes[count - 2] || codes[count - 2] == ' ') return false;
    }
    return IsComposed(text, codes, count);
}

}  // namespace

Character FirstCharacter(std::string_view text) {
    std::int32_t code = -1;
    const auto length = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                         static_cast<utf8proc_ssize_t>(text.size()), &code);
    if (length <= 0) return {-1, 1};
    return {code, static_cast<std::size_t>(length)};
}

bool IsUtf8(std::string_view text) {
    while (!text.empty()) {
        const Character first = FirstCharacter(text);
        if (first.code < 0) return false;
        text.remove_prefix(first.length);
    }
    return true;
}

Cluster FirstCluster(std::string_view text) {
    if (IsAscii(text[0]) && (text.size() == 1 || IsAscii(text[1]))) {
        const bool hidden = IsHidden(text[0]);
        return {hidden ? 0U : 1U, hidden ? 1U : 0U};
    }
    Codes codes{};
    std::size_t length = 0;
    std::size_t shown = 0;
    std::int32_t state = 0;
    for (std::size_t count = 0; length < text.size(); ++count) {
        const auto [code, size] = FirstCharacter(text.substr(length));
        // Nothing joins what is not UTF-8, and an ASCII character always comes first, where those
        // that escape it look for it.
        if (count > 0 && (codes[count - 1] < 0 || code < 0x80 ||
                          utf8proc_grapheme_break_stateful(codes[count - 1], code, &state))) {
            break;
        }
        if (count == kMaxCharacters) return {0, length};
        codes[count] = code;
        const bool shownSoFar = shown == length;
        length += size;
        if (shownSoFar && CanBeShown(text.substr(0, length), codes, count + 1)) shown = length;
    }
    return {shown, length - shown};
}

std::size_t DisplayWidth(std::string_view text) {
    std::size_t width = 0;
    while (!text.empty()) {
        const auto [code, length] = FirstCharacter(text);
        width += static_cast<std::size_t>(std::max(0, utf8proc_charwidth(code)));
        text.remove_prefix(length);
    }
    return width;
}

bool IsCurrencySign(std::int32_t code) {
    return code >= 0 && utf8proc_category(code) == UTF8PROC_CATEGORY_SC;
}

bool HasRightToLeft(std::string_view text) {
    while (!text.empty()) {
        const auto [code, length] = FirstCharacter(text);
        text.remove_prefix(length);
        if (code < 0x80) continue;
        const auto direction = utf8proc_get_property(code)->bidi_class;
        if (direction == UTF8PROC_BIDI_CLASS_R || direction == UTF8PROC_BIDI_CLASS_AL) return true;
    }
    return false;
}

}  // namespace app
