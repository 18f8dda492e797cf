#include "app/base/Printable.h"

#include <fmt/format.h>

#include <algorithm>

#include "app/base/Characters.h"

namespace app {

namespace {

constexpr std::string_view kCut = "...";

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

// Takes the first character with its marks off `text` and gives what is shown for it.
std::string TakeFirst(std::string_view& text) {
    const auto [shown, hidden] = FirstCluster(text);
    std::string first(text.substr(0, shown));
    if (shown > 0 && first[0] == '\\') first.insert(0, 1, '\\');
    for (const char byte : text.substr(shown, hidden)) first += Escape(byte);
    text.remove_prefix(shown + hidden);
    return first;
}

struct Beginning {
    std::string shown;
    bool isAll;
};

// All of `text` if it fits into `width` columns, otherwise as much as leaves room for an ending.
// Every character counts as a column at least, so that no length of text without width fits.
Beginning BeginningOf(std::string_view text, std::size_t width, std::size_t endingWidth) {
    std::string shown;
    std::size_t columns = 0;
    std::size_t kept = 0;
    while (!text.empty()) {
        const std::string next = TakeFirst(text);
        columns += std::max<std::size_t>(1, DisplayWidth(next));
        if (columns > width) return {shown.substr(0, kept), false};
        shown += next;
        if (columns + endingWidth <= width) kept = shown.size();
    }
    return {shown, true};
}

}  // namespace

std::string Printable(std::string_view text) {
    std::string shown;
    while (!text.empty()) shown += TakeFirst(text);
    return shown;
}

std::string Shortened(std::string_view text, std::size_t width) {
    auto [shown, isAll] = BeginningOf(text, width, kCut.size());
    if (!isAll) shown += kCut;
    return shown;
}

std::string Cut(const std::string& text, std::size_t width) {
    if (DisplayWidth(text) <= width) return text;
    const std::size_t room = width - std::min(width, kCut.size());
    std::string_view rest = text;
    std::string kept;
    for (std::size_t columns = 0;;) {
        const auto [shown, hidden] = FirstCluster(rest);
        const std::string_view next = rest.substr(0, shown + hidden);
        columns += DisplayWidth(next);
        if (columns > room) break;
        kept += next;
        rest.remove_prefix(next.size());
    }
    return kept.append(kCut.substr(0, width));
}

std::string ShownName(std::string_view name, std::size_t number, std::size_t width) {
    const std::string ending = fmt::format("{}#{}", kCut, number);
    auto [shown, isAll] = BeginningOf(name, std::max(width, ending.size()), ending.size());
    // A name that itself ends like one that is cut must not be taken for it.
    for (std::size_t at = 0; (at = shown.find("...#", at)) != std::string::npos;) {
        shown.replace(at + kCut.size(), 1, Escape('#'));
    }
    if (isAll && !shown.empty() && shown.back() == ' ')
        shown.replace(shown.size() - 1, 1, Escape(' '));
    if (!shown.empty() && shown.front() == ' ') shown.replace(0, 1, Escape(' '));
    if (!isAll) shown += ending;
    return shown;
}

std::string NotANumber(std::string_view text) {
    return "\"" + Shortened(text) + "\" is not a number that a double can hold";
}

}  // namespace app
