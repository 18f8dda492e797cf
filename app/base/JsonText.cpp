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
    return fmt::format("\\\\x{:02X}", static_cast<unsigned char>(byte));
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

std::string JsonText(std::string_view text) {
    std::string json = "\"";
    while (!text.empty()) {
        if (BeginsLikeByte(text)) {
            json += ByteText('\\');
            text.remove_prefix(1);
            continue;
        }
        auto [shown, hidden] = FirstCluster(text);
        if (shown > 0 && (text[0] == '"' || text[0] == '\\')) json += '\\';
        json += text.substr(0, shown);
        text.remove_prefix(shown);
        while (hidden > 0) {
            const auto [code, length] = FirstCharacter(text);
            json += code < 0 ? ByteText(text[0]) : Escape(code);
            text.remove_prefix(length);
            hidden -= length;
        }
    }
    return json + '"';
}

}  // namespace app
