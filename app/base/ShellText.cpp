#include "app/base/ShellText.h"

#include <fmt/format.h>

#include <cstddef>

#include "app/base/Characters.h"

namespace app {

namespace {

constexpr std::size_t kMaxTyped = 200;

bool CanBeShown(std::string_view text) {
    while (!text.empty()) {
        const auto [shown, hidden] = FirstCluster(text);
        if (hidden > 0) return false;
        text.remove_prefix(shown);
    }
    return true;
}

std::string QuotedWithEscapes(std::string_view text) {
    std::string quoted = "$'";
    while (!text.empty()) {
        const auto [shown, hidden] = FirstCluster(text);
        if (shown > 0 && (text[0] == '\\' || text[0] == '\'')) quoted += '\\';
        quoted += text.substr(0, shown);
        for (const char byte : text.substr(shown, hidden)) {
            quoted += fmt::format("\\x{:02X}", static_cast<unsigned char>(byte));
        }
        text.remove_prefix(shown + hidden);
    }
    return quoted + "'";
}

}  // namespace

std::string ShellQuoted(std::string_view text) {
    if (!CanBeShown(text)) return QuotedWithEscapes(text);
    std::string quoted = "'";
    for (const char byte : text) {
        if (byte == '\'') {
            quoted += "'\\''";
        } else {
            quoted += byte;
        }
    }
    return quoted + "'";
}

std::string ShellOption(std::string_view option, std::string_view value,
                        std::string_view placeholder) {
    if (value.size() > kMaxTyped) return fmt::format("{} {}", option, placeholder);
    // Behind a blank the value -h would be taken for the option.
    const bool likeOption = !value.empty() && value[0] == '-';
    return fmt::format("{}{}{}", option, likeOption ? '=' : ' ', ShellQuoted(value));
}

}  // namespace app
