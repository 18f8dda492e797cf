#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <string>

#include "accredit/documents/NumberText.h"
#include "app/base/Characters.h"
#include "app/data/CellText.h"

namespace app {

namespace {

// Longer texts are no numbers that a person looks at.
constexpr std::size_t kMaxLength = 64;

constexpr std::array<std::string_view, 23> kCurrencyCodes = {
    "AUD", "BRL", "CAD", "CHF", "CNY", "CZK", "DKK", "EUR", "GBP", "HUF", "INR", "JPY",
    "NOK", "PLN", "RUB", "SEK", "USD", "kr",  "Fr.", "US$", "R$",  "A$",  "C$"};

bool IsDigit(char byte) { return byte >= '0' && byte <= '9'; }

// One character for each kind of separator, sign and unit, so that what is left to do is about
// bytes. Nothing for a character that no number has.
std::optional<char> Kind(std::int32_t code) {
    constexpr std::u32string_view kBlanks = U" \u00A0\u2007\u2009\u202F";
    constexpr std::u32string_view kApostrophes = U"'\u2019\u02BC";
    const auto character = static_cast<char32_t>(code);
    if (code >= 0 && kBlanks.find(character) != std::u32string_view::npos) return ' ';
    if (code >= 0 && kApostrophes.find(character) != std::u32string_view::npos) return '\'';
    if (code == 0x2212) return '-';
    if (code == '%' || code == 0x2030) return '%';
    if (IsCurrencySign(code)) return '$';
    if ((code >= '0' && code <= '9') || code == '.' || code == ',' || code == '-' || code == '+' ||
        code == '(' || code == ')' || code == 'e' || code == 'E') {
        return static_cast<char>(code);
    }
    return std::nullopt;
}

// The text with a character of one byte for each of its own; empty if it is no number for certain.
std::string Simplified(std::string_view text) {
    std::string simple;
    while (!text.empty()) {
        const auto code = std::find_if(
            kCurrencyCodes.begin(), kCurrencyCodes.end(),
            [text](std::string_view each) { return text.substr(0, each.size()) == each; });
        if (code != kCurrencyCodes.end()) {
            simple += '$';
            text.remove_prefix(code->size());
            continue;
        }
        const Character first = FirstCharacter(text);
        const std::optional<char> kind = Kind(first.code);
        if (!kind) return {};
        simple += *kind;
        text.remove_prefix(first.length);
    }
    return simple;
}

// Takes the characters of a set away from either end.
std::string_view WithoutEnds(std::string_view text, std::string_view set) {
    text.remove_prefix(std::min(text.find_first_not_of(set), text.size()));
    const std::size_t last = text.find_last_not_of(set);
    return text.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

std::size_t CountDigits(std::string_view text) {
    const auto end = std::find_if_not(text.begin(), text.end(), IsDigit);
    return static_cast<std::size_t>(end - text.begin());
}

// Digits in groups, all with the same separator between them: the last of three digits, those
// before it of two or three. Takes what it knows off the text.
bool TakeGroups(std::string_view& text, char& separator) {
    std::size_t digits = CountDigits(text);
    const bool beginsWithZero = !text.empty() && text.front() == '0';
    text.remove_prefix(digits);
    separator = 0;
    const auto separates = [&separator](char byte) {
        return separator == 0 ? std::string_view(",.' ").find(byte) != std::string_view::npos
                              : byte == separator;
    };
    while (digits <= 3 && digits > 0 && !text.empty() && separates(text.front())) {
        const std::size_t next = CountDigits(text.substr(1));
        const bool goesOn = next == 2 && text.size() > 3 && text[3] == text.front();
        if ((next != 3 && !goesOn) || beginsWithZero) break;
        separator = text.front();
        text.remove_prefix(1 + next);
        digits = next;
    }
    return digits > 0;
}

bool TakeExponent(std::string_view& text) {
    if (text.empty() || (text.front() != 'e' && text.front() != 'E')) return true;
    text.remove_prefix(1);
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) text.remove_prefix(1);
    const std::size_t digits = CountDigits(text);
    text.remove_prefix(digits);
    return digits > 0;
}

}  // namespace

std::optional<double> ParseCell(std::string_view text, bool decimalComma) {
    if (!decimalComma) return MADocuments::ParseNumber(text);
    if (text.find('.') != std::string_view::npos) return std::nullopt;
    const std::size_t comma = text.find(',');
    if (comma == std::string_view::npos) return MADocuments::ParseNumber(text);
    std::string withPoint(text);
    withPoint[comma] = '.';
    return MADocuments::ParseNumber(withPoint);
}

double NumberIn(std::string_view field, bool decimalComma) {
    return ParseCell(MADocuments::TrimBlanks(field), decimalComma)
        .value_or(std::numeric_limits<double>::quiet_NaN());
}

bool IsSpreadsheetNumber(std::string_view text) {
    if (text.size() > kMaxLength) return false;
    const std::string simple = Simplified(text);
    std::string_view rest = WithoutEnds(simple, " ");
    if (rest.size() > 2 && rest.front() == '(' && rest.back() == ')') {
        rest = rest.substr(1, rest.size() - 2);
    }
    // At most one sign of a kind, in any order, and blanks between them.
    const std::string_view body = WithoutEnds(rest, " $%+-");
    const auto outside = [&](char sign) {
        return std::count(rest.begin(), rest.end(), sign) -
               std::count(body.begin(), body.end(), sign);
    };
    if (outside('$') > 1 || outside('%') > 1 || outside('-') + outside('+') > 1) return false;
    rest = body;
    char separator = 0;
    const bool hasWhole = TakeGroups(rest, separator);
    bool hasDecimals = false;
    if (!rest.empty() && (rest.front() == '.' || rest.front() == ',') &&
        rest.front() != separator) {
        rest.remove_prefix(1);
        const std::size_t digits = CountDigits(rest);
        rest.remove_prefix(digits);
        hasDecimals = digits > 0;
    }
    if ((!hasWhole && !hasDecimals) || !TakeExponent(rest) || !rest.empty()) return false;
    // A number that is only too large for a double is written as any other.
    const bool isPlain =
        separator == 0 && text.find_first_not_of("0123456789+-.eE") == std::string_view::npos;
    return !isPlain || text.back() == '-';
}

bool IsAmbiguousComma(std::string_view text) {
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) text.remove_prefix(1);
    const std::size_t whole = CountDigits(text);
    return whole >= 1 && whole <= 3 && text.front() != '0' && text.size() == whole + 4 &&
           text[whole] == ',' && CountDigits(text.substr(whole + 1)) == 3;
}

}  // namespace app
