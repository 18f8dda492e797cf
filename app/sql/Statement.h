#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/sql/Dialect.h"
#include "app/sql/Questions.h"

namespace app {

/// What a statement asks of a column.
struct StatementColumn {
    std::string name;
    /// Any where it is not known; the answer then tells, as far as the engine can.
    Storage storage = Storage::Any;
    bool hasNumbers = false;        ///< How many numbers there are, and between what they lie.
    bool hasMoments = false;        ///< Their mean and deviation, besides.
    std::vector<double> cutPoints;  ///< Those up to which they are counted.
    std::vector<double> missing;    ///< Numbers that stand for a missing value.
    /// The values that are grouped. Of texts beside numbers it takes nothing where the type is
    /// known to have none; numbers may be grouped apart from them, in any case or only where there
    /// are texts.
    enum class Groups { None, All, Texts, TextsAndNumbers, NumbersOnlyBesideTexts };
    Groups groups = Groups::None;
};

/// What the first rows of an answer say, so that it is taken for nothing else.
struct StatementHead {
    std::string round;  ///< "check", or "learn 2".
    Dialect::Engine engine = Dialect::Engine::Ansi;
    std::string source;     ///< "table NAME" or "query SELECT ...".
    std::string reference;  ///< Its fingerprint; empty for none.
    std::string options;    ///< The fingerprint of what the user says of columns.
    std::string earlier;    ///< The fingerprint of the answers of earlier rounds; empty for none.
};

/// The names of the rows of an answer that are no Part.
namespace AnswerRow {
inline constexpr std::string_view kAccredit = "accredit";    ///< Of the head.
inline constexpr std::string_view kRound = "round";          ///< The same.
inline constexpr std::string_view kDialect = "dialect";      ///< The same.
inline constexpr std::string_view kSource = "source";        ///< The same, in hexadecimal digits.
inline constexpr std::string_view kReference = "reference";  ///< The same.
inline constexpr std::string_view kOptions = "options";      ///< The same.
inline constexpr std::string_view kEarlier = "earlier";      ///< The same.
inline constexpr std::string_view kRows = "rows";            ///< All rows, once for every scan.
inline constexpr std::string_view kType = "type";            ///< See Dialect::TypeOf.
inline constexpr std::string_view kTexts = "texts";          ///< How many values are texts.
inline constexpr std::string_view kGroup = "group";          ///< Equal values, by their key.
inline constexpr std::string_view kNumber = "number";        ///< The same of numbers.
inline constexpr std::string_view kColumn = "column";  ///< A name and a type; see DecodeColumnKey.
inline constexpr std::string_view kNull = "null";      ///< The values that are not there.
}  // namespace AnswerRow

/// The form of answers; another one is refused.
inline constexpr std::string_view kAnswerVersion = "1";

/// The scans of the table that a statement counts all rows in: two for every piece of so many
/// columns that have numbers.
std::vector<std::size_t> PiecesOf(const std::vector<StatementColumn>& columns);

/// What is answered of the numbers of a column, a row each.
std::vector<Part> PartsOf(const StatementColumn& column);

/// Whether the answer tells what the type of a column is.
bool TellsType(Dialect::Engine engine, const StatementColumn& column);
/// Whether the answer tells how many values of a column with numbers are texts.
bool TellsTexts(Dialect::Engine engine, const StatementColumn& column);

/// One statement, for the engine's own client, that answers all of it: rows of a column's number,
/// from 1 on, a part, a key and a count. Rows about all have the number 0. Throws UsageError for a
/// name that cannot stand in a statement.
std::string WriteStatement(const StatementHead& head, const std::vector<StatementColumn>& columns);

/// One statement that asks for the names and the types of a table's columns: a row of each, with
/// the key that DecodeColumnKey takes apart. Throws UsageError for a query in the place of a table.
std::string WriteColumnsStatement(const StatementHead& head);
/// The name and the type, as the engine calls it; nothing for any other text.
std::optional<std::pair<std::string, std::string>> DecodeColumnKey(std::string_view key);
/// How values of a type are stored.
Storage StorageOfType(Dialect::Engine engine, std::string_view name);

}  // namespace app
