#include "app/sql/Dialect.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <utility>

#include "accredit/documents/NumberText.h"

namespace app {

namespace {

using Engine = Dialect::Engine;

constexpr std::array<std::pair<std::string_view, Engine>, 5> kNames = {{
    {"ansi", Engine::Ansi},
    {"postgresql", Engine::PostgreSql},
    {"mysql", Engine::MySql},
    {"sqlite", Engine::Sqlite},
    {"clickhouse", Engine::ClickHouse},
}};

// What a table is called within a query.
constexpr const char* kRows = "accredit_rows";

// The number as a whole one times a power of two, by whole numbers and products that are exact: no
// decimal fraction is read, which SQLite does not always round to the nearest double.
std::string AsPowerOfTwo(double number) {
    constexpr int kDigits = 53;
    constexpr int kStep = 52;
    int exponent = 0;
    const double fraction = std::frexp(number, &exponent);
    auto whole = static_cast<std::int64_t>(std::ldexp(fraction, kDigits));
    exponent -= kDigits;
    while (exponent < 0 && whole != 0 && whole % 2 == 0) {
        whole /= 2;
        ++exponent;
    }
    std::string sql = fmt::format("(CAST({} AS REAL)", whole);
    for (; exponent != 0 && whole != 0;) {
        const int step = std::min(std::abs(exponent), kStep);
        sql += fmt::format(" {} {}.0", exponent > 0 ? '*' : '/', std::int64_t{1} << step);
        exponent += exponent > 0 ? -step : step;
    }
    return sql + ")";
}

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// The characters that clients quote, cut at or change, which ANSI SQL has no hexadecimal digits
// for.
constexpr std::string_view kEscaped = "%\"',;\\\t\n\r";

// `engine` may have a function for control characters, which an editor or a pipe could change.
std::string PercentEncoded(const std::string& key, Engine engine) {
    std::string sql = key;
    for (const char c : kEscaped) {
        const auto code = static_cast<unsigned char>(c);
        const std::string text = engine == Engine::Sqlite && code < 0x20U
                                     ? fmt::format("char({})", code)
                                 : c == '\'' ? "''''"
                                             : fmt::format("'{}'", c);
        sql = fmt::format("REPLACE({}, {}, '%{:02X}')", sql, text, code);
    }
    return fmt::format("'[' || {} || ']'", sql);
}

std::optional<Key> DecodeText(std::string_view shown, char mark) {
    std::string text;
    for (std::size_t i = 0; i < shown.size(); ++i) {
        if (mark != 0 && shown[i] != mark) {
            text += shown[i];
            continue;
        }
        if (mark != 0) ++i;
        if (i + 1 >= shown.size()) return std::nullopt;
        const int high = HexDigit(shown[i]);
        const int low = HexDigit(shown[++i]);
        if (high < 0 || low < 0) return std::nullopt;
        text += static_cast<char>(high * 16 + low);
    }
    return Key{text};
}

}  // namespace

std::string Lower(std::string_view text) {
    std::string lower;
    for (const char c : text) {
        lower += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return lower;
}

std::optional<double> NumberOf(std::string_view shown) {
    const std::string_view text = MADocuments::TrimBlanks(shown);
    if (const auto number = MADocuments::ParseNumber(text)) return number;
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const std::string lower = Lower(text);
    const std::string sign = lower.substr(0, 1);
    const std::string word = lower.substr(sign == "-" || sign == "+" ? 1 : 0);
    if (word == "nan") return std::numeric_limits<double>::quiet_NaN();
    if (word != "inf" && word != "infinity") return std::nullopt;
    return sign == "-" ? -kInfinity : kInfinity;
}

Expression& Expression::operator+=(const Expression& other) {
    sql += other.sql;
    numbers.insert(numbers.end(), other.numbers.begin(), other.numbers.end());
    return *this;
}

std::optional<Engine> Dialect::EngineNamed(std::string_view name) {
    for (const auto& [known, engine] : kNames) {
        if (known == name) return engine;
    }
    return std::nullopt;
}

Dialect Dialect::ForConnection(std::string_view productName, char quote) {
    const std::string name = Lower(productName);
    const auto has = [&name](const char* part) { return name.find(part) != std::string::npos; };
    const Engine engine = has("sqlite")                    ? Engine::Sqlite
                          : has("postgres")                ? Engine::PostgreSql
                          : has("mariadb") || has("mysql") ? Engine::MySql
                          : has("clickhouse")              ? Engine::ClickHouse
                                                           : Engine::Ansi;
    Dialect dialect(engine, Numbers::Bound);
    if (engine != Engine::Ansi) return dialect;
    // Nearly all know LIMIT, which is not in the standard; what is, few do.
    dialect.mHasLimit = !has("oracle") && !has("db2");
    dialect.mQuote = quote;
    return dialect;
}

std::string Dialect::Name() const {
    for (const auto& [name, engine] : kNames) {
        if (engine == mEngine) return std::string(name);
    }
    return {};
}

char Dialect::Quote() const {
    if (mQuote != 0) return mQuote;
    return mEngine == Engine::MySql || mEngine == Engine::ClickHouse ? '`' : '"';
}

// In ClickHouse a backslash within quotes escapes what follows.
std::string Dialect::Quoted(std::string_view name) const {
    if (Quote() == ' ') return std::string(name);
    std::string quoted(1, Quote());
    for (const char c : name) {
        if (c == '\\' && mEngine == Engine::ClickHouse) quoted += c;
        if (c == Quote()) quoted += mEngine == Engine::ClickHouse ? '\\' : c;
        quoted += c;
    }
    return quoted + Quote();
}

// SQLite takes a name between double quotes that it does not know for a text, unless a table stands
// before it. The alias of a distributed table is not always known to the nodes of ClickHouse.
bool Dialect::HasAlias() const { return mEngine != Engine::ClickHouse; }

std::string Dialect::Column(std::string_view name) const {
    return (HasAlias() ? std::string(kRows) + "." : std::string()) + Quoted(name);
}

std::string Dialect::Query(std::string_view select) const {
    const std::size_t last = select.find_last_not_of(" \t\r\n;");
    // The query may end in a comment.
    return fmt::format("({}\n) {}", select.substr(0, last + 1), kRows);
}

std::string Dialect::TableName(std::string_view name) const {
    if (!name.empty() && name.front() == Quote()) return std::string(name);
    std::string quoted;
    for (;;) {
        const std::size_t point = name.find('.');
        quoted += Quoted(name.substr(0, point));
        if (point == std::string_view::npos) return quoted;
        quoted += '.';
        name.remove_prefix(point + 1);
    }
}

std::string Dialect::Table(std::string_view name) const {
    return HasAlias() ? TableName(name) + " " + kRows : TableName(name);
}

std::vector<std::string> Dialect::PartsOf(std::string_view table) const {
    const bool isQuoted = !table.empty() && table.front() == Quote();
    std::vector<std::string> parts(1);
    bool isWithin = false;
    for (std::size_t i = 0; i < table.size(); ++i) {
        const char c = table[i];
        if (isWithin && c == '\\' && mEngine == Engine::ClickHouse && i + 1 < table.size()) {
            parts.back() += table[++i];
        } else if (isQuoted && c == Quote()) {
            const bool isDoubled = isWithin && i + 1 < table.size() && table[i + 1] == c;
            if (isDoubled) parts.back() += table[++i];
            if (!isDoubled) isWithin = !isWithin;
        } else if (c == '.' && !isWithin) {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    return parts;
}

std::string Dialect::Text(std::string_view text) const {
    const bool escapes = mEngine == Engine::MySql || mEngine == Engine::ClickHouse;
    std::string quoted = "'";
    for (const char c : text) {
        if (c == '\'' || (c == '\\' && escapes)) quoted += c;
        quoted += c;
    }
    return quoted + "'";
}

std::string Dialect::LiteralOf(double number) const {
    if (mEngine == Engine::Sqlite) return AsPowerOfTwo(number);
    if (mEngine == Engine::ClickHouse) {
        std::uint64_t bits = 0;
        std::memcpy(&bits, &number, sizeof bits);
        std::string bytes;
        for (; bytes.size() < 2 * sizeof bits; bits >>= 8U)
            bytes += fmt::format("{:02X}", bits & 0xFFU);
        return fmt::format("reinterpretAsFloat64(unhex('{}'))", bytes);
    }
    const std::string digits = fmt::format("{:.17e}", number);
    if (mEngine == Engine::PostgreSql) return fmt::format("CAST('{}' AS DOUBLE PRECISION)", digits);
    return number < 0.0 ? "(" + digits + ")" : digits;
}

Expression Dialect::Number(double number) const {
    if (mNumbers == Numbers::Literal) return {LiteralOf(number)};
    // PostgreSQL would settle the type of a bare parameter by what stands beside it.
    return {mEngine == Engine::PostgreSql ? "CAST(? AS DOUBLE PRECISION)" : "?", {number}};
}

std::string Dialect::AsDouble(std::string_view quoted, Storage storage) const {
    if (storage == Storage::Double) return std::string(quoted);
    switch (mEngine) {
        case Engine::Sqlite:
            return fmt::format(
                "CASE WHEN typeof({0}) IN ('integer', 'real') THEN CAST({0} AS REAL) END", quoted);
        case Engine::MySql:
            // Spider does not hand a cast to its nodes.
            return fmt::format("({} * 1e0)", quoted);
        case Engine::ClickHouse:
            return fmt::format("toFloat64({})", quoted);
        default:
            // PostgreSQL has no cast from a boolean to a double.
            return storage == Storage::Boolean
                       ? fmt::format("CASE WHEN {0} THEN 1e0 WHEN NOT {0} THEN 0e0 END", quoted)
                       : fmt::format("CAST({} AS DOUBLE PRECISION)", quoted);
    }
}

std::string Dialect::AsDoubleOf(std::string_view quoted, bool hasIntegers) const {
    return hasIntegers ? fmt::format("CAST({} AS REAL)", quoted) : std::string(quoted);
}

std::string Dialect::Without(const std::string& value, const std::vector<double>& numbers) const {
    if (numbers.empty()) return value;
    std::string conditions;
    for (const double number : numbers) {
        conditions +=
            fmt::format("{}{} <> {}", conditions.empty() ? "" : " AND ", value, LiteralOf(number));
    }
    return fmt::format("CASE WHEN {} THEN {} END", conditions, value);
}

std::string Dialect::AsKey(std::string_view quoted, Storage storage, bool isOnNodes) const {
    if (storage == Storage::Double) return std::string(quoted);
    switch (mEngine) {
        case Engine::PostgreSql:
            // A node answers for itself only what it is asked without a cast and a collation.
            if (isOnNodes && storage == Storage::Text) return std::string(quoted);
            return fmt::format("CAST({} AS text) COLLATE \"C\"", quoted);
        case Engine::MySql:
            // Behind the bar blanks count. Spider hands no collation to its nodes, and a cast to
            // bytes takes three times as long.
            if (isOnNodes) {
                return fmt::format("CAST(CONCAT(CONVERT({} USING utf8mb4), '|') AS BINARY)",
                                   quoted);
            }
            return fmt::format("CONCAT(CONVERT({} USING utf8mb4) COLLATE utf8mb4_bin, '|')",
                               quoted);
        case Engine::Sqlite:
            return fmt::format("{} COLLATE BINARY", quoted);
        case Engine::ClickHouse:
            return fmt::format("toString({})", quoted);
        case Engine::Ansi:
            break;
    }
    return storage == Storage::Text ? std::string(quoted)
                                    : fmt::format("CAST({} AS VARCHAR(100))", quoted);
}

std::string Dialect::ShownKey(const std::string& key, Storage storage) const {
    std::string number = mEngine == Engine::MySql || mEngine == Engine::ClickHouse
                             ? fmt::format("concat('=', {})", AsText(key))
                             : fmt::format("'=' || {}", AsText(key));
    if (storage == Storage::Double) return number;
    switch (mEngine) {
        case Engine::PostgreSql:
            return fmt::format("encode(convert_to(CAST({} AS text), 'UTF8'), 'hex')", key);
        case Engine::Sqlite:
            // hex() shows the bytes of the database's own encoding, which mostly is UTF-8.
            return fmt::format(
                "CASE WHEN {0} IS NULL THEN NULL WHEN typeof({0}) = 'real' THEN {1} WHEN "
                "typeof({0}) = 'blob' OR instr({0}, char(0)) > 0 THEN hex({0}) ELSE {2} END",
                key, number, PercentEncoded(key, mEngine));
        case Engine::MySql:
            // Without the bar of AsKey.
            return fmt::format("hex(LEFT({0}, CHAR_LENGTH({0}) - 1))", key);
        case Engine::ClickHouse:
            return fmt::format("hex({})", key);
        case Engine::Ansi:
            break;
    }
    return PercentEncoded(key, mEngine);
}

std::string Dialect::AsText(const std::string& number) const {
    switch (mEngine) {
        case Engine::PostgreSql:
            return fmt::format("CAST({} AS text)", number);
        case Engine::MySql:
            return fmt::format("CAST({} AS CHAR)", number);
        case Engine::Sqlite:
            // As many digits as it takes for the rounding of the conversion not to matter.
            return fmt::format("CASE WHEN {0} IS NOT NULL THEN printf('%!.20e', {0}) END", number);
        case Engine::ClickHouse:
            return fmt::format("toString({})", number);
        case Engine::Ansi:
            break;
    }
    return fmt::format("CAST({} AS VARCHAR(40))", number);
}

std::string Dialect::IsText(std::string_view quoted) const {
    return fmt::format("typeof({}) IN ('text', 'blob')", quoted);
}

std::string Dialect::TypeOf(std::string_view quoted, std::string_view from) const {
    switch (mEngine) {
        case Engine::PostgreSql:
            return fmt::format(
                "CASE CAST(pg_typeof((SELECT {} FROM {} LIMIT 1)) AS text) WHEN 'boolean' THEN "
                "'boolean' ELSE 'text' END",
                quoted, from);
        case Engine::MySql:
            // A number can be told by what it may be compared with, but a date only by the quotes
            // that JSON puts around it.
            return fmt::format(
                "(SELECT CASE WHEN COERCIBILITY({0}) < 5 THEN 'text' WHEN JSON_ARRAY({0}) LIKE "
                "'[\"%' THEN 'date' ELSE 'number' END FROM {1} WHERE {0} IS NOT NULL LIMIT 1)",
                quoted, from);
        case Engine::ClickHouse:
            return fmt::format(
                "multiIf(match(toTypeName({0}), 'String'), 'text', match(toTypeName({0}), "
                "'Date'), 'date', 'number')",
                quoted);
        default:
            return {};
    }
}

Expression Dialect::CountAtMost(const std::string& value, double bound) const {
    Expression condition{value + " <= "};
    condition += Number(bound);
    return {CountIf(condition.sql), condition.numbers};
}

std::string Dialect::CountIf(const std::string& condition) const {
    switch (mEngine) {
        case Engine::PostgreSql:
        case Engine::Sqlite:
            return fmt::format("COUNT(*) FILTER (WHERE {})", condition);
        case Engine::ClickHouse:
            return fmt::format("countIf({})", condition);
        default:
            return fmt::format("COUNT(CASE WHEN {} THEN 1 END)", condition);
    }
}

std::string Dialect::Limit(std::uint64_t rows) const {
    return mHasLimit ? fmt::format(" LIMIT {}", rows)
                     : fmt::format(" FETCH FIRST {} ROWS ONLY", rows);
}

std::optional<Key> DecodeKey(std::string_view shown) {
    if (!shown.empty() && shown.front() == '=') {
        const std::optional<double> number = NumberOf(shown.substr(1));
        if (!number) return std::nullopt;
        return Key{MADocuments::SpellNumber(*number), number};
    }
    if (shown.size() >= 2 && shown.front() == '[' && shown.back() == ']') {
        return DecodeText(shown.substr(1, shown.size() - 2), '%');
    }
    return DecodeText(shown, 0);
}

}  // namespace app
