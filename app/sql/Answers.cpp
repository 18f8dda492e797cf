#include "app/sql/Answers.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <limits>
#include <map>
#include <set>
#include <tuple>
#include <utility>

#include "accredit/documents/NumberText.h"
#include "app/base/Errors.h"
#include "app/base/Fingerprint.h"
#include "app/base/Printable.h"
#include "app/sql/TableSummary.h"

using MADocuments::TrimBlanks;

namespace app {

namespace {

constexpr std::string_view kDelimiters = "\t,|;";
constexpr std::array<std::string_view, 4> kHeadings = {"accredit_column", "accredit_part",
                                                       "accredit_key", "accredit_count"};

using Fields = std::array<std::string_view, 4>;

[[noreturn]] void Refuse(const std::string& fileName, std::size_t line,
                         const std::string& problem) {
    throw InputError(fmt::format("{}:{}: {}", fileName, line, problem));
}

std::string_view Bare(std::string_view field) {
    field = TrimBlanks(field);
    if (field.size() >= 2 && field.front() == '"' && field.back() == '"') {
        field = TrimBlanks(field.substr(1, field.size() - 2));
    }
    return field;
}

// The fields of a line. Within a key, which no client has reason to quote, may stand what stands
// between fields elsewhere.
std::optional<Fields> Split(std::string_view line, char delimiter) {
    const std::size_t first = line.find(delimiter);
    if (first == std::string_view::npos) return std::nullopt;
    const std::size_t second = line.find(delimiter, first + 1);
    const std::size_t last = line.rfind(delimiter);
    if (second == std::string_view::npos || last <= second) return std::nullopt;
    return Fields{Bare(line.substr(0, first)), Bare(line.substr(first + 1, second - first - 1)),
                  Bare(line.substr(second + 1, last - second - 1)), Bare(line.substr(last + 1))};
}

std::optional<std::uint64_t> WholeNumber(std::string_view text) {
    constexpr std::size_t kMaxDigits = 18;
    if (text.empty() || text.size() > kMaxDigits) return std::nullopt;
    std::uint64_t number = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') return std::nullopt;
        number = 10 * number + static_cast<std::uint64_t>(c - '0');
    }
    return number;
}

bool IsHeading(const Fields& fields) {
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const std::string_view heading = kHeadings[i];
        const bool isSame =
            std::equal(fields[i].begin(), fields[i].end(), heading.begin(), heading.end(),
                       [](char left, char right) {
                           return std::tolower(static_cast<unsigned char>(left)) == right;
                       });
        if (!isSame) return false;
    }
    return true;
}

// "(12 rows)", which psql prints at the end.
bool IsFooter(std::string_view line) {
    if (line.empty() || line.front() != '(') return false;
    const std::size_t blank = line.find(' ');
    return blank != std::string_view::npos && WholeNumber(line.substr(1, blank - 1)) &&
           (line.substr(blank) == " rows)" || line.substr(blank) == " row)");
}

bool IsRule(std::string_view line) {
    return line.find_first_not_of("-+|") == std::string_view::npos;
}

class Parser {
public:
    Parser(std::string_view text, const std::string& fileName) : mText(text), mName(fileName) {}

    std::vector<AnswerLine> Lines();

private:
    bool Next(std::string_view& line);
    AnswerLine RowOf(std::string_view line);
    bool FindDelimiter(std::string_view line);

    std::string_view mText;
    const std::string& mName;
    std::size_t mLine = 0;
    char mDelimiter = 0;
};

// The next line that is not empty.
bool Parser::Next(std::string_view& line) {
    while (!mText.empty()) {
        const std::size_t end = std::min(mText.find('\n'), mText.size());
        line = mText.substr(0, end);
        mText.remove_prefix(std::min(end + 1, mText.size()));
        ++mLine;
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        if (!TrimBlanks(line).empty()) return true;
    }
    return false;
}

// Finds what stands between the fields of the first line, and whether these are headings.
bool Parser::FindDelimiter(std::string_view line) {
    for (const char delimiter : kDelimiters) {
        const std::optional<Fields> fields = Split(line, delimiter);
        if (!fields) continue;
        const bool isHeading = IsHeading(*fields);
        if (!isHeading && !(WholeNumber((*fields)[0]) && WholeNumber((*fields)[3]))) continue;
        mDelimiter = delimiter;
        return isHeading;
    }
    Refuse(mName, mLine,
           fmt::format("\"{}\" is no row of an answer; is this what the client printed for the "
                       "statement of 'accredit sql', or an error?",
                       Shortened(line)));
}

AnswerLine Parser::RowOf(std::string_view line) {
    const std::optional<Fields> fields = Split(line, mDelimiter);
    const std::optional<std::uint64_t> column = fields ? WholeNumber((*fields)[0]) : std::nullopt;
    const std::optional<std::uint64_t> count = fields ? WholeNumber((*fields)[3]) : std::nullopt;
    if (!column || !count) {
        Refuse(mName, mLine,
               fmt::format("\"{}\" is no row of an answer; did the client print an error, or not "
                           "all?",
                           Shortened(line)));
    }
    AnswerLine row{mLine, *column, std::string((*fields)[1]), std::nullopt, *count};
    const std::string_view key = (*fields)[2];
    if (key != "NULL" && key != "\\N") row.key = std::string(key);
    return row;
}

std::vector<AnswerLine> Parser::Lines() {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (mText.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
        mText.remove_prefix(kByteOrderMark.size());
    }
    std::vector<AnswerLine> rows;
    std::string_view line;
    if (!Next(line)) throw InputError(mName + ": there is no answer in it");
    bool isHeading = FindDelimiter(line);
    if (!isHeading) rows.push_back(RowOf(line));
    while (Next(line)) {
        if (isHeading && IsRule(TrimBlanks(line))) continue;
        isHeading = false;
        if (IsFooter(TrimBlanks(line))) {
            if (!Next(line)) break;
            Refuse(mName, mLine, "there is more behind the end of the answer");
        }
        rows.push_back(RowOf(line));
    }
    return rows;
}

std::string Unhex(const std::string& digits) {
    const std::optional<Key> key = DecodeKey(digits);
    return key ? key->text : "";
}

// Takes the rows that say what an answer is of.
StatementHead TakeHead(std::vector<AnswerLine>& lines, const std::string& fileName) {
    std::map<std::string, std::string> found;
    const std::set<std::string_view> known = {
        AnswerRow::kAccredit, AnswerRow::kRound,     AnswerRow::kDialect, AnswerRow::kSource,
        AnswerRow::kOptions,  AnswerRow::kReference, AnswerRow::kEarlier};
    const auto isHead = [&](const AnswerLine& row) {
        if (row.column != 0 || known.count(row.part) == 0) return false;
        if (!found.emplace(row.part, row.key.value_or("")).second) {
            Refuse(fileName, row.line,
                   fmt::format("the row \"{}\" stands twice; are there two answers in the file?",
                               row.part));
        }
        return true;
    };
    lines.erase(std::remove_if(lines.begin(), lines.end(), isHead), lines.end());
    const auto value = [&found](std::string_view part) { return found[std::string(part)]; };
    for (const std::string_view part :
         {AnswerRow::kAccredit, AnswerRow::kRound, AnswerRow::kDialect, AnswerRow::kSource,
          AnswerRow::kOptions}) {
        if (value(part).empty()) {
            throw InputError(fmt::format(
                "{}: the row \"{}\", which says what the answer is of, is missing; is the answer "
                "whole?",
                fileName, part));
        }
    }
    if (value(AnswerRow::kAccredit) != kAnswerVersion) {
        throw InputError(fmt::format(
            "{}: the statement of the answer is of another version of this program; print it again",
            fileName));
    }
    const std::optional<Dialect::Engine> engine = Dialect::EngineNamed(value(AnswerRow::kDialect));
    if (!engine) {
        throw InputError(fmt::format("{}: \"{}\" is no dialect", fileName,
                                     Shortened(value(AnswerRow::kDialect))));
    }
    return {value(AnswerRow::kRound),         *engine,
            Unhex(value(AnswerRow::kSource)), value(AnswerRow::kReference),
            value(AnswerRow::kOptions),       value(AnswerRow::kEarlier)};
}

std::string FingerprintOf(const std::vector<AnswerLine>& lines) {
    std::vector<std::array<std::string, 4>> rows;
    rows.reserve(lines.size());
    for (const AnswerLine& row : lines) {
        rows.push_back({fmt::format("{}", row.column), row.part, row.key.value_or(""),
                        fmt::format("{}", row.count)});
    }
    std::sort(rows.begin(), rows.end());
    Fingerprint fingerprint;
    for (const auto& row : rows) fingerprint.AddRow({row.begin(), row.end()});
    return fingerprint.Text();
}

std::optional<Storage> StorageNamed(const std::string& type) {
    if (type == "number") return Storage::Number;
    if (type == "text") return Storage::Text;
    if (type == "date") return Storage::Date;
    if (type == "boolean") return Storage::Boolean;
    return std::nullopt;
}

// Puts the rows of an answer to the columns.
class Taker {
public:
    Taker(const Answers& answers, const std::vector<StatementColumn>& columns)
        : mAnswers(answers), mColumns(columns), mTable(SourceName(answers.head.source)) {
        mTaken.columns.resize(columns.size());
        mTaken.types.resize(columns.size());
    }

    StatementAnswer Take();

private:
    void TakeLine(const AnswerLine& row);
    void TakePart(const AnswerLine& row, Part part);
    void TakeGroup(const AnswerLine& row);
    [[noreturn]] void RefuseLine(const AnswerLine& row) const;
    void RequireAll() const;
    void Require(std::size_t column, std::string_view part, const std::string& key) const;
    [[noreturn]] void RefuseGroups(const StatementColumn& column, std::uint64_t found,
                                   std::uint64_t expected) const;
    void Settle(std::size_t i);

    using Place = std::tuple<std::size_t, std::string, std::string>;

    const Answers& mAnswers;
    const std::vector<StatementColumn>& mColumns;
    std::string mTable;
    StatementAnswer mTaken;
    std::set<Place> mPlaces;
    std::optional<std::uint64_t> mRows;
};

void Taker::RefuseLine(const AnswerLine& row) const {
    Refuse(mAnswers.fileName, row.line,
           fmt::format(R"(a row "{}" of column {} with the key "{}" was not asked for)", row.part,
                       row.column, Shortened(row.key.value_or("NULL"))));
}

void Taker::TakeLine(const AnswerLine& row) {
    const bool isGroup = row.part == AnswerRow::kGroup || row.part == AnswerRow::kNull ||
                         row.part == AnswerRow::kNumber;
    const std::optional<Part> part = PartNamed(row.part);
    const bool hasPlace = row.part == AnswerRow::kRows || part == Part::AtMost || isGroup;
    if (row.column > mColumns.size()) RefuseLine(row);
    if (!mPlaces.insert({row.column, row.part, hasPlace ? row.key.value_or("") : ""}).second) {
        Refuse(mAnswers.fileName, row.line,
               fmt::format("the row \"{}\" of column {} with the key \"{}\" stands twice; is the "
                           "answer there twice?",
                           row.part, row.column, Shortened(row.key.value_or("NULL"))));
    }
    if (row.column == 0) {
        if (row.part != AnswerRow::kRows) RefuseLine(row);
        if (!mRows) mRows = row.count;
        if (*mRows != row.count) RefuseChangedTable(mTable);
        return;
    }
    AnsweredType& type = mTaken.types[row.column - 1];
    if (isGroup) {
        TakeGroup(row);
    } else if (part) {
        TakePart(row, *part);
    } else if (row.part == AnswerRow::kTexts) {
        type.texts = row.count;
    } else if (row.part == AnswerRow::kType) {
        const std::string name = row.key.value_or("");
        type.storage = StorageNamed(name);
        if (!type.storage && !name.empty()) RefuseLine(row);
    } else {
        RefuseLine(row);
    }
}

void Taker::TakePart(const AnswerLine& row, Part part) {
    const StatementColumn& column = mColumns[row.column - 1];
    ColumnAnswer& answer = mTaken.columns[row.column - 1];
    std::size_t index = 0;
    std::optional<double> value = static_cast<double>(row.count);
    if (part == Part::AtMost) {
        index = WholeNumber(row.key.value_or("")).value_or(0);
        if (index == 0 || index > column.cutPoints.size()) RefuseLine(row);
        --index;
    } else if (IsDouble(part)) {
        value.reset();
        if (row.key && !row.key->empty()) {
            value = NumberOf(*row.key);
            if (!value) RefuseLine(row);
            // What ClickHouse has for nothing.
            if (part == Part::Scale && *value == 0.0) value.reset();
        }
    }
    if (!answer.Take(part, index, value)) RefuseLine(row);
}

void Taker::TakeGroup(const AnswerLine& row) {
    if (mColumns[row.column - 1].groups == StatementColumn::Groups::None) RefuseLine(row);
    AnsweredType& type = mTaken.types[row.column - 1];
    const bool isNumber = row.part == AnswerRow::kNumber;
    (isNumber ? type.numbersGrouped : type.grouped) += row.count;
    if (row.part == AnswerRow::kNull) return;
    // The empty text has no digits, and clients that show NULL as nothing show it alike.
    const std::optional<Key> key = DecodeKey(row.key.value_or(""));
    if (!key) RefuseLine(row);
    (isNumber ? type.numbers : mTaken.columns[row.column - 1].groups).push_back({*key, row.count});
}

void Taker::Require(std::size_t column, std::string_view part, const std::string& key) const {
    if (mPlaces.count({column, std::string(part), key}) != 0) return;
    const std::string of =
        column == 0 ? "" : fmt::format(" of column \"{}\"", Shortened(mColumns[column - 1].name));
    throw InputError(fmt::format("{}: the row \"{}\"{} is missing; is the answer whole?",
                                 mAnswers.fileName, part, of));
}

void Taker::RequireAll() const {
    const Dialect::Engine engine = mAnswers.head.engine;
    std::size_t first = 0;
    const std::vector<std::size_t> pieces = PiecesOf(mColumns);
    for (std::size_t piece = 0; piece < pieces.size(); ++piece) {
        const auto begin = mColumns.begin() + static_cast<std::ptrdiff_t>(first);
        const auto end = mColumns.begin() + static_cast<std::ptrdiff_t>(pieces[piece]);
        const bool hasMore = std::any_of(begin, end, [](const StatementColumn& column) {
            return column.hasNumbers && (column.hasMoments || !column.cutPoints.empty());
        });
        Require(0, AnswerRow::kRows, fmt::format("{}a", piece));
        if (hasMore && engine != Dialect::Engine::ClickHouse) {
            Require(0, AnswerRow::kRows, fmt::format("{}b", piece));
        }
        first = pieces[piece];
    }
    for (std::size_t i = 0; i < mColumns.size(); ++i) {
        const StatementColumn& column = mColumns[i];
        if (TellsType(engine, column)) Require(i + 1, AnswerRow::kType, "");
        if (TellsTexts(engine, column)) Require(i + 1, AnswerRow::kTexts, "");
        for (const Part part : PartsOf(column)) Require(i + 1, PartName(part), "");
        for (std::size_t k = 0; column.hasNumbers && k < column.cutPoints.size(); ++k) {
            Require(i + 1, PartName(Part::AtMost), fmt::format("{}", k + 1));
        }
    }
}

void Taker::RefuseGroups(const StatementColumn& column, std::uint64_t found,
                         std::uint64_t expected) const {
    throw InputError(fmt::format(
        "{}: the groups of column \"{}\" are of {} values, and not of {}; is the answer whole? Or "
        "the table changed meanwhile",
        mAnswers.fileName, Shortened(column.name), found, expected));
}

// What belongs together in the answer of a column.
void Taker::Settle(std::size_t i) {
    const StatementColumn& column = mColumns[i];
    ColumnAnswer& answer = mTaken.columns[i];
    AnsweredType& type = mTaken.types[i];
    type.hasTooManyGroups = answer.groups.size() > MaxCategories();
    type.hasTooManyNumbers = type.numbers.size() > MaxCategories();
    const bool hasNumberGroups =
        column.groups == StatementColumn::Groups::TextsAndNumbers ||
        (column.groups == StatementColumn::Groups::NumbersOnlyBesideTexts && type.texts > 0);
    if (hasNumberGroups && type.numbersGrouped != answer.count && !type.hasTooManyNumbers) {
        RefuseGroups(column, type.numbersGrouped, answer.count);
    }
    std::optional<std::uint64_t> expected;
    if (column.groups == StatementColumn::Groups::All) {
        expected = *mRows;
    } else if (column.groups != StatementColumn::Groups::None) {
        if (TellsTexts(mAnswers.head.engine, column)) expected = type.texts;
        if (type.storage == Storage::Text) expected = *mRows;
    }
    if (expected && type.grouped != *expected && !type.hasTooManyGroups) {
        RefuseGroups(column, type.grouped, *expected);
    }
    // Engines make some number of any text, and have a smallest of none.
    if (answer.count == 0 || type.storage == Storage::Text) {
        ColumnAnswer none;
        none.groups = std::move(answer.groups);
        answer = std::move(none);
    } else if (std::isnan(answer.deviation) || std::isnan(answer.center)) {
        answer.sum = std::numeric_limits<double>::quiet_NaN();
    }
}

StatementAnswer Taker::Take() {
    for (const AnswerLine& row : mAnswers.lines) TakeLine(row);
    RequireAll();
    mTaken.rows = *mRows;
    for (std::size_t i = 0; i < mColumns.size(); ++i) Settle(i);
    return std::move(mTaken);
}

}  // namespace

std::string SourceName(const std::string& source) {
    constexpr std::string_view kTable = "table ";
    return source.compare(0, kTable.size(), kTable) == 0 ? Printable(source.substr(kTable.size()))
                                                         : "query";
}

Answers ParseAnswers(std::string_view text, const std::string& fileName) {
    Answers answers;
    answers.fileName = fileName;
    answers.lines = Parser(text, fileName).Lines();
    answers.fingerprint = FingerprintOf(answers.lines);
    answers.head = TakeHead(answers.lines, fileName);
    return answers;
}

Answers ReadAnswers(InputFile& file) {
    constexpr std::size_t kPiece = std::size_t{1} << 20U;
    std::string text;
    std::size_t got = kPiece;
    while (got == kPiece) {
        text.resize(text.size() + kPiece);
        got = file.Read(text.data() + text.size() - kPiece, kPiece);
        text.resize(text.size() - kPiece + got);
    }
    return ParseAnswers(text, file.Name());
}

void RequireAnswerTo(const StatementHead& asked, const Answers& answers) {
    const StatementHead& head = answers.head;
    const auto refuse = [&answers](const std::string& difference) {
        throw InputError(answers.fileName + ": " + difference);
    };
    if (head.round != asked.round) {
        refuse(fmt::format("this is an answer to '{}', where one to '{}' belongs",
                           Shortened(head.round), asked.round));
    }
    if (!asked.source.empty() && head.source != asked.source) {
        refuse(fmt::format("this is an answer about the {}, and not the {}",
                           Shortened(head.source, 60), Shortened(asked.source, 60)));
    }
    if (head.reference != asked.reference) {
        refuse("this is an answer for another reference");
    }
    if (head.options != asked.options) {
        refuse("the statement was printed with other options for columns; give the same to both");
    }
    if (head.earlier != asked.earlier) {
        refuse("this is no answer to the statement that the answers before it led to");
    }
}

std::vector<ResultColumn> TakeColumns(const Answers& answers) {
    std::map<std::size_t, ResultColumn> found;
    for (const AnswerLine& row : answers.lines) {
        const auto key = row.part == AnswerRow::kColumn && row.column > 0
                             ? DecodeColumnKey(row.key.value_or(""))
                             : std::nullopt;
        if (!key || key->first.empty()) {
            Refuse(answers.fileName, row.line, "this row is no column's");
        }
        const Storage storage = StorageOfType(answers.head.engine, key->second);
        if (!found.emplace(row.column, ResultColumn{key->first, storage, key->second}).second) {
            Refuse(answers.fileName, row.line,
                   fmt::format("column {} stands twice; is the answer there twice, or are there "
                               "two tables of the name? SCHEMA.TABLE tells them apart",
                               row.column));
        }
    }
    if (found.empty()) {
        throw InputError(fmt::format(
            "{}: the engine knows no columns of the {}; is the name spelled as the engine has it, "
            "and in this schema?",
            answers.fileName, Shortened(answers.head.source, 60)));
    }
    std::vector<ResultColumn> columns;
    columns.reserve(found.size());
    for (auto& [number, column] : found) columns.push_back(std::move(column));
    return columns;
}

StatementAnswer TakeAnswers(const Answers& answers, const std::vector<StatementColumn>& columns) {
    return Taker(answers, columns).Take();
}

}  // namespace app
