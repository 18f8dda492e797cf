#include "accredit/host/internal/XMLText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>

namespace MCDetail {

namespace {

constexpr std::uint32_t kNotUTF8 = 0xFFFFFFFF;

struct Range {
    std::uint32_t first;
    std::uint32_t last;
};

// XML 1.0, fifth edition, production 4: what a name may begin with.
constexpr std::array<Range, 16> kNameStart = {{{':', ':'},
                                               {'A', 'Z'},
                                               {'_', '_'},
                                               {'a', 'z'},
                                               {0xC0, 0xD6},
                                               {0xD8, 0xF6},
                                               {0xF8, 0x2FF},
                                               {0x370, 0x37D},
                                               {0x37F, 0x1FFF},
                                               {0x200C, 0x200D},
                                               {0x2070, 0x218F},
                                               {0x2C00, 0x2FEF},
                                               {0x3001, 0xD7FF},
                                               {0xF900, 0xFDCF},
                                               {0xFDF0, 0xFFFD},
                                               {0x10000, 0xEFFFF}}};

// Production 4a: what may follow besides.
constexpr std::array<Range, 6> kNameRest = {
    {{'-', '-'}, {'.', '.'}, {'0', '9'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040}}};

template <std::size_t N>
bool IsIn(const std::array<Range, N>& ranges, std::uint32_t c) {
    return std::any_of(ranges.begin(), ranges.end(),
                       [c](const Range& range) { return range.first <= c && c <= range.last; });
}

// Takes the first character off a text that is not empty. kNotUTF8 for anything but the shortest
// encoding of a code point up to U+10FFFF; surrogates are decoded like other code points.
std::uint32_t TakeCharacter(std::string_view& text) {
    const auto byte = [&text](std::size_t i) -> std::uint32_t {
        return static_cast<unsigned char>(text[i]);
    };
    const std::uint32_t lead = byte(0);
    if (lead < 0x80) {
        text.remove_prefix(1);
        return lead;
    }
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    constexpr std::array<std::uint32_t, 5> kLowest = {0, 0, 0x80, 0x800, 0x10000};
    if (lead < 0xC0 || lead > 0xF7 || text.size() < length) return kNotUTF8;
    std::uint32_t c = lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80) return kNotUTF8;
        c = (c << 6U) | (byte(i) & 0x3FU);
    }
    text.remove_prefix(length);
    return c < kLowest[length] || c > 0x10FFFF ? kNotUTF8 : c;
}

bool IsXMLCharacter(std::uint32_t c) {
    if (c < 0x20) return c == '\t' || c == '\n' || c == '\r';
    return c <= 0xD7FF || (c >= 0xE000 && c <= 0xFFFD) || (c >= 0x10000 && c <= 0x10FFFF);
}

}  // namespace

bool IsXMLText(std::string_view text) {
    while (!text.empty()) {
        if (!IsXMLCharacter(TakeCharacter(text))) return false;
    }
    return true;
}

bool IsXMLName(std::string_view text) {
    if (text.empty() || !IsIn(kNameStart, TakeCharacter(text))) return false;
    while (!text.empty()) {
        const std::uint32_t c = TakeCharacter(text);
        if (!IsIn(kNameStart, c) && !IsIn(kNameRest, c)) return false;
    }
    return true;
}

void AppendEscaped(std::string& buffer, std::string_view text) {
    constexpr std::string_view kSpecial = "&<>\"\t\n\r";
    constexpr std::array<std::string_view, kSpecial.size()> kReferences = {
        "&amp;", "&lt;", "&gt;", "&quot;", "&#9;", "&#10;", "&#13;"};
    while (true) {
        const std::size_t plain = std::min(text.find_first_of(kSpecial), text.size());
        buffer += text.substr(0, plain);
        if (plain == text.size()) return;
        buffer += kReferences[kSpecial.find(text[plain])];
        text.remove_prefix(plain + 1);
    }
}

std::string FormatNumber(double value) {
    std::array<char, 32> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    return {digits.data(), end};
}

std::string FormatWhole(double value) {
    // The largest double has 309 digits before the point.
    std::array<char, 320> digits{};
    const auto end =
        std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed)
            .ptr;
    return {digits.data(), end};
}

}  // namespace MCDetail
