#include <algorithm>
#include <array>
#include <cstddef>

#include "app/data/CellText.h"

namespace app {

namespace {

// Longer texts are no dates.
constexpr std::size_t kMaxLength = 64;

constexpr std::array<std::string_view, 12> kMonths = {
    "january", "february", "march",     "april",   "may",      "june",
    "july",    "august",   "september", "october", "november", "december"};
constexpr std::array<std::string_view, 7> kWeekdays = {
    "monday", "tuesday", "wednesday", "thursday", "friday", "saturday", "sunday"};

bool IsDigit(char byte) { return byte >= '0' && byte <= '9'; }
bool IsLetter(char byte) { return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z'); }

struct Number {
    int value = 0;
    std::size_t digits = 0;

    bool IsIn(std::size_t least, std::size_t most, int limit) const {
        return digits >= least && digits <= most && value <= limit;
    }
    // Zero stands for a date that is not known.
    bool IsMonth() const { return IsIn(1, 2, 12); }
    bool IsDay() const { return IsIn(1, 2, 31); }
    bool IsYear() const { return digits == 4; }
    bool IsShortOrLongYear() const { return digits == 2 || digits == 4; }
};

// Takes what it knows off the front of a text.
class Scanner {
public:
    explicit Scanner(std::string_view text) : mRest(text) {}

    bool AtEnd() const { return mRest.empty(); }
    char Next() const { return mRest.empty() ? '\0' : mRest.front(); }

    // The byte, if it is one of these; 0 if it is none of them.
    char Take(std::string_view bytes) {
        const char next = Next();
        if (next == '\0' || bytes.find(next) == std::string_view::npos) return '\0';
        mRest.remove_prefix(1);
        return next;
    }

    void TakeBlanks() {
        while (Take(" ")) continue;
    }

    // Up to 9 digits.
    Number TakeNumber() {
        Number number;
        while (number.digits < 9 && IsDigit(Next())) {
            number.value = 10 * number.value + (Next() - '0');
            ++number.digits;
            mRest.remove_prefix(1);
        }
        return number;
    }

    // A name of the list, or its first three letters, with a point behind it or not.
    template <std::size_t kCount>
    bool TakeName(const std::array<std::string_view, kCount>& names) {
        const auto end = std::find_if_not(mRest.begin(), mRest.end(), IsLetter);
        const auto length = static_cast<std::size_t>(end - mRest.begin());
        const std::string_view word = mRest.substr(0, length);
        const bool isKnown = std::any_of(names.begin(), names.end(), [word](auto name) {
            const std::string_view known =
                word.size() == 3 || word == "Sept" ? name.substr(0, word.size()) : name;
            return std::equal(word.begin(), word.end(), known.begin(), known.end(),
                              [](char left, char right) { return (left | ' ') == right; });
        });
        if (!isKnown) return false;
        mRest.remove_prefix(length);
        Take(".");
        return true;
    }

    // Up to so many letters, or any number with slashes and underscores between them.
    bool TakeWord(std::size_t longest) {
        const auto end = std::find_if_not(mRest.begin(), mRest.end(), [](char byte) {
            return IsLetter(byte) || byte == '/' || byte == '_';
        });
        const auto length = static_cast<std::size_t>(end - mRest.begin());
        if (length == 0) return false;
        const bool isName = mRest.substr(0, length).find('/') != std::string_view::npos;
        if (length > longest && !isName) return false;
        mRest.remove_prefix(length);
        return true;
    }

private:
    std::string_view mRest;
};

// Z, +01:00, -05, UTC, Europe/Berlin.
bool TakeZone(Scanner& scanner) {
    if (!scanner.Take("+-")) return scanner.TakeWord(5);
    const Number hours = scanner.TakeNumber();
    if (scanner.Take(":")) return hours.digits == 2 && scanner.TakeNumber().digits == 2;
    return hours.digits == 2 || hours.digits == 4;
}

// 12:34, 12:34:56.789, 0:00 PM, and a zone.
bool TakeTime(Scanner& scanner) {
    if (!scanner.TakeNumber().IsIn(1, 2, 24) || !scanner.Take(":")) return false;
    if (!scanner.TakeNumber().IsIn(2, 2, 59)) return false;
    if (scanner.Take(":")) {
        if (!scanner.TakeNumber().IsIn(2, 2, 60)) return false;
        if (scanner.Take(".,") && scanner.TakeNumber().digits == 0) return false;
    }
    scanner.TakeBlanks();
    Scanner half = scanner;
    if (half.Take("AaPp") && half.Take("Mm") && !IsLetter(half.Next())) {
        scanner = half;
        scanner.TakeBlanks();
    }
    if (scanner.AtEnd() || IsDigit(scanner.Next())) return true;
    return TakeZone(scanner);
}

// 2024-01-31, 2024/1/31, 2024.01.31, and 2024-01 alone.
bool TakeYearFirst(Scanner& scanner, char separator) {
    if (!scanner.TakeNumber().IsMonth()) return false;
    if (!scanner.Take({&separator, 1})) return separator != '.' && scanner.AtEnd();
    return scanner.TakeNumber().IsDay();
}

// 31.01.2024, 1/31/24, 01-31-24, and 31-Jan-2024.
bool TakeDayFirst(Scanner& scanner, const Number& first, char separator) {
    if (!first.IsDay()) return false;
    if (scanner.TakeName(kMonths)) {
        return scanner.Take({&separator, 1}) && scanner.TakeNumber().IsShortOrLongYear();
    }
    const Number second = scanner.TakeNumber();
    if (!second.IsDay() || (!first.IsMonth() && !second.IsMonth())) return false;
    if (!scanner.Take({&separator, 1})) return false;
    const Number year = scanner.TakeNumber();
    if (year.IsYear()) return true;
    return year.digits == 2 && (separator != '-' || (first.digits == 2 && second.digits == 2));
}

// Jan 31, 2024; Jan 31 12:00:00 CET 2024; Jan-24; January 2024.
bool TakeMonthFirst(Scanner& scanner) {
    if (scanner.Take("-")) {
        return scanner.TakeNumber().IsShortOrLongYear();
    }
    scanner.TakeBlanks();
    const Number number = scanner.TakeNumber();
    if (number.IsYear()) return true;
    if (!number.IsDay()) return false;
    scanner.Take(",");
    scanner.TakeBlanks();
    Scanner timeFirst = scanner;
    if (TakeTime(timeFirst)) {
        scanner = timeFirst;
        scanner.TakeBlanks();
    }
    return scanner.TakeNumber().IsYear();
}

// 31 Jan 2024.
bool TakeDayAndName(Scanner& scanner, const Number& day) {
    scanner.TakeBlanks();
    if (!day.IsDay() || !scanner.TakeName(kMonths)) return false;
    scanner.TakeBlanks();
    return scanner.TakeNumber().IsYear();
}

bool TakeDay(Scanner& scanner) {
    if (scanner.TakeName(kWeekdays)) {
        scanner.Take(",");
        scanner.TakeBlanks();
    }
    if (scanner.TakeName(kMonths)) return TakeMonthFirst(scanner);
    const Number first = scanner.TakeNumber();
    if (first.digits == 0) return false;
    if (scanner.Next() == ' ') return TakeDayAndName(scanner, first);
    const char separator = scanner.Take("-/.");
    if (separator == '\0') return false;
    return first.IsYear() ? TakeYearFirst(scanner, separator)
                          : TakeDayFirst(scanner, first, separator);
}

// 20240131T120000Z.
bool IsBasicTimestamp(Scanner scanner) {
    if (scanner.TakeNumber().digits != 8 || !scanner.Take("T")) return false;
    const std::size_t digits = scanner.TakeNumber().digits;
    scanner.Take("Z");
    return (digits == 4 || digits == 6) && scanner.AtEnd();
}

}  // namespace

bool IsDate(std::string_view text) {
    if (text.size() > kMaxLength) return false;
    if (IsBasicTimestamp(Scanner(text))) return true;
    Scanner scanner(text);
    if (!TakeDay(scanner)) return false;
    if (scanner.AtEnd()) return true;
    scanner.Take("T,:");
    scanner.TakeBlanks();
    return TakeTime(scanner) && scanner.AtEnd();
}

}  // namespace app
