#include "app/base/JsonText.h"

#include <fmt/format.h>

#include <cstdint>

#include "app/base/Characters.h"

namespace app {

namespace {

bool IsUpperHex(char byte) { return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'F'); }

bool BeginsLikeByte(std::string_view text) {
    return text.size() >= 4 && text[0] == '\\' && text[1] == 'x' && IsUpperHex(text[2]) &&
           IsUpperHex(text[3]);
}

std::string ByteText(char byte) {
    return fmt::format("\\x{:02X}", static_cast<unsigned char>(byte));
}

std::string Escape(std::int32_t code) {
    if (code == '\n') return "\\n";
    if (code == '\r') return "\\r";
    if (code == '\t') return "\\t";
    if (code < 0x10000) return fmt::format("\\u{:04x}", code);
    const std::int32_t rest = code - 0x10000;
    return fmt::format("\\u{:04x}\\u{:04x}", 0xD800 + (rest >> 10), 0xDC00 + (rest & 0x3FF));
}

}  // namespace

std::string Utf8Text(std::string_view text) {
    std::string utf8;
    while (!text.empty()) {
        const auto [code, length] = FirstCharacter(text);
        if (code < 0 || BeginsLikeByte(text)) {
            utf8 += ByteText(text[0]);
        } else {
            utf8 += text.substr(0, length);
        }
        text.remove_prefix(length);
    }
    return utf8;
}

std::string JsonText(std::string_view text) {
    const std::string utf8 = Utf8Text(text);
    std::string_view rest = utf8;
    std::string json = "\"";
    while (!rest.empty()) {
        auto [shown, hidden] = FirstCluster(rest);
        if (shown > 0 && (rest[0] == '"' || rest[0] == '\\')) json += '\\';
        json += rest.substr(0, shown);
        rest.remove_prefix(shown);
        while (hidden > 0) {
            const auto [code, length] = FirstCharacter(rest);
            json += Escape(code);
            rest.remove_prefix(length);
            hidden -= length;
        }
    }
    return json + '"';
}

}  // namespace app
