#include "accredit/documents/NumberText.h"

#include <fast_float/fast_float.h>

#include <array>
#include <charconv>
#include <cmath>
#include <system_error>

#include "accredit/host/MCMV.h"

namespace MADocuments {

namespace {

bool IsBlank(char byte) { return byte == ' ' || byte == '\t'; }

}  // namespace

std::string_view TrimBlanks(std::string_view text) {
    while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
    return text;
}

std::optional<double> ParseNumber(std::string_view text) {
    if (!text.empty() && text.front() == '+') {
        text.remove_prefix(1);
        if (!text.empty() && text.front() == '-') return std::nullopt;
    }
    double value = 0.0;
    const char* const end = text.data() + text.size();
    const auto parsed = fast_float::from_chars(text.data(), end, value);
    if (parsed.ec != std::errc() || parsed.ptr != end) return std::nullopt;
    // NaN and infinities by name, and a number too large for a double, which becomes an infinity.
    if (!std::isfinite(value) || MCMV::IsMissing(value)) return std::nullopt;
    return value;
}

std::string SpellNumber(double number) {
    std::array<char, 32> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    return {digits.data(), end};
}

}  // namespace MADocuments
