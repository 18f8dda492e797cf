#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace app {

/// SQL text, and the numbers that its question marks stand for, in their order.
struct Expression {
    std::string sql;
    std::vector<double> numbers = {};

    Expression& operator+=(const Expression& other);
    Expression& operator+=(std::string_view text) { return sql += text, *this; }
};

/// How the values of a table's column are stored, as far as it matters to a query.
enum class Storage {
    Double,   ///< As doubles.
    Number,   ///< As other numbers, which become doubles before anything is done with them.
    Text,     ///< As texts.
    Boolean,  ///< As true and false.
    Date,     ///< As dates, times or intervals.
    Any,      ///< Each value as it came, which only SQLite has.
    Other,    ///< As bytes or anything else that is neither a number nor a text.
};

/// What engines disagree about in the few parts of SQL that a summary takes.
class Dialect {
public:
    enum class Engine { Ansi, PostgreSql, MySql, Sqlite, ClickHouse };

    /// How numbers get into a query: as parameters, or as literals that no engine reads as another
    /// double.
    enum class Numbers { Bound, Literal };

    Dialect(Engine engine, Numbers numbers)
        : mEngine(engine), mNumbers(numbers), mHasLimit(engine != Engine::Ansi) {}
    /// That of an engine that calls itself so ("MariaDB") and quotes names with this character, or
    /// not at all if it is a blank.
    static Dialect ForConnection(std::string_view productName, char quote);

    /// The dialect of this name, as the option --dialect takes it.
    static std::optional<Engine> EngineNamed(std::string_view name);

    Engine GetEngine() const { return mEngine; }
    /// As the option --dialect takes it.
    std::string Name() const;

    /// A name between the engine's quotes, those within doubled.
    std::string Quoted(std::string_view name) const;
    /// A table's name, whose parts are set apart by points, with quotes around each; one that
    /// begins with a quote is taken as it stands.
    std::string TableName(std::string_view name) const;
    /// The same as it stands behind FROM.
    std::string Table(std::string_view name) const;
    /// A query in the place of a table. A semicolon at its end does not count.
    std::string Query(std::string_view select) const;
    /// A column of either. No engine takes it for anything else if there is no such column.
    std::string Column(std::string_view name) const;
    /// The parts of such a name, without quotes.
    std::vector<std::string> PartsOf(std::string_view table) const;
    /// A text between quotes. It may hold no control characters.
    std::string Text(std::string_view text) const;

    /// A number.
    Expression Number(double number) const;

    /// The value of a column as a double; NULL where it has none.
    std::string AsDouble(std::string_view quoted, Storage storage) const;
    /// The same of a column without texts, of which it is known whether it has integers.
    std::string AsDoubleOf(std::string_view quoted, bool hasIntegers) const;
    /// A value, but NULL where it is one of these numbers.
    std::string Without(const std::string& value, const std::vector<double>& numbers) const;
    /// The value of a column as what `GROUP BY` tells apart byte by byte. Where nodes may group by
    /// themselves, in a way that they understand, in PostgreSQL as the collation of the column
    /// does.
    std::string AsKey(std::string_view quoted, Storage storage, bool isOnNodes = false) const;
    /// What shows a key, which may be NULL, so that no client and no driver changes it: a text by
    /// the hexadecimal digits of its UTF-8, a double by its digits behind an equals sign. See
    /// DecodeKey.
    std::string ShownKey(const std::string& key, Storage storage) const;
    /// A double as text that gives it back, NULL as NULL. `number` is a name: it may stand twice.
    std::string AsText(const std::string& number) const;

    /// Whether a value of SQLite is a text, or bytes, which are taken for one.
    std::string IsText(std::string_view quoted) const;
    /// What the engine says of the type of a column of `from`: 'number', 'text', 'date', 'boolean',
    /// or NULL if there are no values to tell it by. Empty if there is nothing to ask.
    std::string TypeOf(std::string_view quoted, std::string_view from) const;

    /// How many values are at most so large. Never NULL.
    Expression CountAtMost(const std::string& value, double bound) const;
    /// How many rows fulfil a condition. Never NULL.
    std::string CountIf(const std::string& condition) const;

    /// What stands behind a query to have no more than so many of its rows.
    std::string Limit(std::uint64_t rows) const;

private:
    std::string LiteralOf(double number) const;
    char Quote() const;
    bool HasAlias() const;

    Engine mEngine;
    Numbers mNumbers;
    bool mHasLimit;
    char mQuote = 0;  // 0 for that of the engine
};

/// What a group of equal values has in common.
struct Key {
    std::string text;                   ///< As a cell of a CSV file would spell it.
    std::optional<double> number = {};  ///< Of what is stored as a double.
};

/// The text with small letters in the place of capital ones of ASCII.
std::string Lower(std::string_view text);

/// The number that an engine spells, also an infinity or NaN; nothing for any other text.
std::optional<double> NumberOf(std::string_view shown);

/// The key that ShownKey shows, unless it is NULL; nothing for a text that it does not give.
std::optional<Key> DecodeKey(std::string_view shown);

}  // namespace app
