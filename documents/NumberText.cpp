#include "accredit/documents/NumberText.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <system_error>

#include "accredit/host/MCMV.h"
#include "app/base/Printable.h"

namespace app {

namespace {

bool IsBlank(char byte) { return byte == ' ' || byte == '\t'; }

constexpr std::size_t kShortDigits = 15;
constexpr std::array<double, kShortDigits + 1> kPowersOfTen = {
    1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

// The number if it has up to 15 digits and no exponent, as most numbers in files do; nothing if
// std::from_chars must judge the text. The digits and the power of ten are exact as doubles, so
// their quotient, rounded once, is the double nearest to the number.
std::optional<double> ParseShortNumber(std::string_view text) {
    const bool negative = !text.empty() && text.front() == '-';
    if (negative) text.remove_prefix(1);
    if (text.size() > kShortDigits + 1) return std::nullopt;
    std::int64_t digits = 0;
    std::size_t count = 0;
    std::size_t point = text.size();
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char byte = text[i];
        if (byte >= '0' && byte <= '9') {
            digits = 10 * digits + (byte - '0');
            ++count;
        } else if (byte == '.' && point == text.size()) {
            point = i;
        } else {
            return std::nullopt;
        }
    }
    if (count == 0 || count > kShortDigits) return std::nullopt;
    const std::size_t decimals = point == text.size() ? 0 : text.size() - point - 1;
    const double value = static_cast<double>(digits) / kPowersOfTen[decimals];
    return negative ? -value : value;
}

// Whether a number that no double can hold is too small rather than too large: std::from_chars
// tells the two apart no more than its status does. `text` has a digit above 0.
bool IsTooSmall(std::string_view text) {
    const std::size_t exponentAt = std::min(text.find_first_of("eE"), text.size());
    const std::string_view mantissa = text.substr(0, exponentAt);
    const auto point = static_cast<long long>(std::min(mantissa.find('.'), mantissa.size()));
    const auto leading = static_cast<long long>(mantissa.find_first_of("123456789"));
    std::string_view digits = text.substr(std::min(exponentAt + 1, text.size()));
    const bool negative = !digits.empty() && digits.front() == '-';
    if (!digits.empty() && digits.front() == '+') digits.remove_prefix(1);
    long long exponent = 0;
    const auto parsed = std::from_chars(digits.data(), digits.data() + digits.size(), exponent);
    if (parsed.ec == std::errc::result_out_of_range) return negative;
    // Both positions are below the length of a field, so the sum below does not overflow.
    return std::clamp(exponent, -(1LL << 60), 1LL << 60) + point - leading < 0;
}

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
    if (const std::optional<double> number = ParseShortNumber(text)) return number;
    double value = 0.0;
    const char* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, value);
    if (parsed.ptr != end || parsed.ec == std::errc::invalid_argument) return std::nullopt;
    if (parsed.ec == std::errc::result_out_of_range) {
        if (!IsTooSmall(text)) return std::nullopt;
        return text.front() == '-' ? -0.0 : 0.0;
    }
    if (!std::isfinite(value) || MCMV::IsMissing(value)) return std::nullopt;
    return value;
}

std::string NotANumber(std::string_view text) {
    return fmt::format("\"{}\" is not a number that a double can hold", Shortened(text));
}

}  // namespace app
