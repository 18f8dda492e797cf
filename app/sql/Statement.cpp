#include "app/sql/Statement.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <utility>

#include "app/base/Errors.h"
#include "app/base/Printable.h"
#include "app/sql/TableSummary.h"

namespace app {

namespace {

using Engine = Dialect::Engine;
using Groups = StatementColumn::Groups;

// So many expressions and rows a scan: PostgreSQL takes 1,664 expressions, SQLite 500 rows that are
// put together by UNION ALL.
constexpr std::size_t kMaxAnswers = 400;
// So many parts that are put together by UNION ALL.
constexpr std::size_t kMaxParts = 100;
// ClickHouse takes 262,144 bytes and 50,000 elements, which may have few bytes, unless it is told
// otherwise.
constexpr std::size_t kClickHouseBytes = 150'000;

// Numbers are multiplied by a power of two before they are added up, by which their squares neither
// overflow nor vanish. It is chosen by the size of the largest.
constexpr int kLargeExponent = 400;
constexpr int kSmallExponent = -400;
constexpr int kTinyExponent = -700;
constexpr int kLargeScale = -600;
constexpr int kSmallScale = 600;
constexpr int kTinyScale = 1000;
// What a scale makes smaller than the rounding of the sum that it would be added to; see Scale.
constexpr int kLargeFloor = -400 - kLargeScale;
// Numbers outside of these would make a sum overflow, or its quotient vanish. Without them, a
// center is less near to the mean, which matters little.
constexpr int kMaxSummed = 900;
constexpr int kMinSummed = -900;
// What is added to a deviation before it is squared does not change it, but keeps its square from
// vanishing, which some engines refuse.
constexpr int kLeastDeviation = -530;

double PowerOfTwo(int exponent) { return std::ldexp(1.0, exponent); }

std::string Hex(std::string_view text) {
    std::string hex;
    for (const char c : text) hex += fmt::format("{:02x}", static_cast<unsigned char>(c));
    return hex;
}

// Engines end a name or a text at a control character, or leave it out.
void RequirePlain(std::string_view text, const char* what) {
    const bool isPlain = std::all_of(text.begin(), text.end(),
                                     [](char c) { return static_cast<unsigned char>(c) >= 0x20; });
    if (isPlain) return;
    throw UsageError(
        fmt::format("{} \"{}\" has a control character, which cannot stand in a statement", what,
                    Shortened(text)));
}

// A row of the answer to one scan.
struct Row {
    std::size_t column;
    std::string part;
    std::string key;       // as it is,
    std::string keySql;    // or what makes it; empty for the former
    std::string countSql;  // empty for 1
};

std::string Join(const std::vector<std::string>& texts, const std::string& between) {
    std::string joined;
    for (const std::string& text : texts) joined += (joined.empty() ? "" : between) + text;
    return joined;
}

std::vector<Row> HeadRows(const StatementHead& head) {
    const auto row = [](std::string_view part, const std::string& key) {
        return Row{0, std::string(part), key, "", ""};
    };
    std::vector<Row> rows = {
        row(AnswerRow::kAccredit, std::string(kAnswerVersion)), row(AnswerRow::kRound, head.round),
        row(AnswerRow::kDialect, Dialect(head.engine, Dialect::Numbers::Literal).Name()),
        row(AnswerRow::kSource, Hex(head.source)), row(AnswerRow::kOptions, head.options)};
    if (!head.reference.empty()) rows.push_back(row(AnswerRow::kReference, head.reference));
    if (!head.earlier.empty()) rows.push_back(row(AnswerRow::kEarlier, head.earlier));
    return rows;
}

class Writer {
public:
    Writer(const StatementHead& head, const std::vector<StatementColumn>& columns);

    std::string Text();

private:
    struct Piece {
        std::size_t first;
        std::size_t last;
        std::size_t number;
        bool isFirst;
    };

    bool IsClickHouse() const { return mHead.engine == Engine::ClickHouse; }
    std::string Literal(int exponent) const { return mDialect.Number(PowerOfTwo(exponent)).sql; }
    std::string Quoted(std::size_t i) const;
    std::string Value(std::size_t i) const;
    std::string ScaleFor(std::size_t i) const;
    std::string MeanFor(std::size_t i) const;
    std::string CenterFor(std::size_t i) const;
    std::string Summed(std::size_t i) const;
    Expression Deviation(std::size_t i, const std::string& from) const;
    std::string Square(const std::string& deviation) const;
    std::vector<Row> RowsOf(const Piece& piece) const;
    void AddCommon(const Piece& piece);
    std::string EndsOf(std::size_t i) const;
    std::string MoreOf(std::size_t i, const std::string& from) const;
    std::string Rotated(const std::vector<Row>& rows, const std::string& from) const;
    std::string CentersOf(const Piece& piece) const;
    std::string ClickHousePart(const Piece& piece) const;
    enum class Grouped { All, Texts, Numbers };
    std::string GroupPart(std::size_t i, Grouped grouped, bool onlyBesideTexts) const;
    void AddGroups(std::size_t i);
    std::string Union(std::vector<std::string> parts) const;

    const StatementHead& mHead;
    const std::vector<StatementColumn>& mColumns;
    Dialect mDialect;
    std::string mFrom;
    std::vector<std::string> mCommon;  // the common table expressions
    std::vector<std::string> mParts;
    std::vector<std::size_t> mPieceOf;
};

Writer::Writer(const StatementHead& head, const std::vector<StatementColumn>& columns)
    : mHead(head),
      mColumns(columns),
      mDialect(head.engine, Dialect::Numbers::Literal),
      mPieceOf(columns.size()) {
    const std::size_t blank = head.source.find(' ');
    const std::string source = head.source.substr(blank + 1);
    const bool isTable = head.source.substr(0, blank) == "table";
    if (isTable) RequirePlain(source, "--table:");
    mFrom = isTable ? mDialect.Table(source) : mDialect.Query(source);
    for (const StatementColumn& column : columns) RequirePlain(column.name, "the column");
}

std::string Writer::Quoted(std::size_t i) const { return mDialect.Column(mColumns[i].name); }

std::string Writer::Value(std::size_t i) const {
    return mDialect.Without(mDialect.AsDouble(Quoted(i), mColumns[i].storage), mColumns[i].missing);
}

// A power of two, by the smallest and the largest number.
std::string Writer::ScaleFor(std::size_t i) const {
    const auto reaches = [&](int exponent) {
        return fmt::format("accredit_h{0} >= {1} OR accredit_l{0} <= {2}", i, Literal(exponent),
                           mDialect.Number(-PowerOfTwo(exponent)).sql);
    };
    return fmt::format(
        "CASE WHEN {} THEN {} WHEN {} THEN {} WHEN {} THEN {} WHEN accredit_h{} > 0 OR "
        "accredit_l{} < 0 THEN {} ELSE {} END",
        reaches(kLargeExponent), Literal(kLargeScale), reaches(kSmallExponent), Literal(0),
        reaches(kTinyExponent), Literal(kSmallScale), i, i, Literal(kTinyScale), Literal(0));
}

std::string Writer::Summed(std::size_t i) const {
    const std::string value = Value(i);
    // A sum that overflows is an infinity there.
    if (mHead.engine == Engine::Sqlite) return fmt::format("SUM({})", value);
    return fmt::format("SUM(CASE WHEN abs({0}) BETWEEN {1} AND {2} THEN {0} ELSE 0e0 END)", value,
                       Literal(kMinSummed), Literal(kMaxSummed));
}

// A number near the mean; 0 where the sum is no use.
std::string Writer::MeanFor(std::size_t i) const {
    return fmt::format(
        "CASE WHEN accredit_n{0} > 0 AND abs(accredit_s{0}) <= {1} THEN accredit_s{0} / "
        "accredit_n{0} ELSE 0e0 END",
        i, Literal(kMaxSummed + 64));
}

std::string Writer::CenterFor(std::size_t i) const {
    return fmt::format(
        "CASE WHEN accredit_f{0} >= 1 OR abs(accredit_a{0}) >= {1} THEN accredit_a{0} * "
        "accredit_f{0} ELSE 0e0 END",
        i, Literal(kLargeFloor));
}

Expression Writer::Deviation(std::size_t i, const std::string& from) const {
    const std::string value = Value(i);
    const std::string scale = fmt::format("{}accredit_f{}", from, i);
    const std::string center = fmt::format("{}accredit_m{}", from, i);
    switch (mHead.engine) {
        case Engine::Sqlite:
        case Engine::ClickHouse:
        case Engine::MySql:
            // What is too small becomes 0 there.
            return {fmt::format("{} * {} - {}", value, scale, center)};
        default:
            return {
                fmt::format("CASE WHEN {1} >= 1 OR abs({0}) >= {2} THEN {0} * {1} WHEN {0} IS "
                            "NOT NULL THEN 0e0 END - {3}",
                            value, scale, Literal(kLargeFloor), center)};
    }
}

std::string Writer::Square(const std::string& deviation) const {
    const bool refusesVanishing =
        mHead.engine == Engine::PostgreSql || mHead.engine == Engine::Ansi;
    const std::string side =
        refusesVanishing ? fmt::format("(abs({}) + {})", deviation, Literal(kLeastDeviation))
                         : "(" + deviation + ")";
    return side + " * " + side;
}

std::vector<Row> Writer::RowsOf(const Piece& piece) const {
    const std::string sums = IsClickHouse() ? "" : fmt::format("accredit_center{}.", piece.number);
    const std::string more = IsClickHouse() ? "" : fmt::format("accredit_more{}.", piece.number);
    std::vector<Row> rows;
    if (piece.isFirst) rows = HeadRows(mHead);
    const auto addRows = [&](const std::string& from, const char* scan) {
        rows.push_back({0, std::string(AnswerRow::kRows), fmt::format("{}{}", piece.number, scan),
                        "", from + "accredit_rows"});
    };
    addRows(sums, "a");
    bool hasMore = false;
    for (std::size_t i = piece.first; i < piece.last; ++i) {
        const StatementColumn& column = mColumns[i];
        if (TellsType(mHead.engine, column)) {
            rows.push_back(
                {i + 1, std::string(AnswerRow::kType), "", mDialect.TypeOf(Quoted(i), mFrom), ""});
        }
        if (!column.hasNumbers) continue;
        if (TellsTexts(mHead.engine, column)) {
            rows.push_back({i + 1, std::string(AnswerRow::kTexts), "", "",
                            fmt::format("{}accredit_t{}", sums, i)});
        }
        const auto add = [&](Part part, const std::string& sql) {
            if (!IsDouble(part)) {
                rows.push_back({i + 1, std::string(PartName(part)), "", "", sql});
                return;
            }
            rows.push_back({i + 1, std::string(PartName(part)), "", mDialect.AsText(sql), ""});
        };
        add(Part::Count, fmt::format("{}accredit_n{}", sums, i));
        add(Part::Minimum, fmt::format("{}accredit_l{}", sums, i));
        add(Part::Maximum, fmt::format("{}accredit_h{}", sums, i));
        for (std::size_t k = 0; k < column.cutPoints.size(); ++k) {
            rows.push_back({i + 1, std::string(PartName(Part::AtMost)), fmt::format("{}", k + 1),
                            "", fmt::format("{}accredit_b{}_{}", more, i, k)});
        }
        hasMore = hasMore || !column.cutPoints.empty() || column.hasMoments;
        if (!column.hasMoments) continue;
        add(Part::Center,
            fmt::format("{}{}{}", sums, IsClickHouse() ? "accredit_center" : "accredit_m", i));
        add(Part::Scale,
            fmt::format("{}{}{}", sums, IsClickHouse() ? "accredit_scale" : "accredit_f", i));
        add(Part::Deviation, fmt::format("{}accredit_d{}", more, i));
        add(Part::Square, fmt::format("{}accredit_q{}", more, i));
    }
    if (hasMore && !IsClickHouse()) addRows(more, "b");
    return rows;
}

// How many numbers there are, and between what they lie.
std::string Writer::EndsOf(std::size_t i) const {
    return fmt::format(
        ", COUNT({0}) AS accredit_n{1}, MIN({0}) AS accredit_l{1}, MAX({0}) AS accredit_h{1}",
        Value(i), i);
}

// One row with that, and with the scales and the centers of the columns that have moments.
std::string Writer::CentersOf(const Piece& piece) const {
    std::string sums = "SELECT COUNT(*) AS accredit_rows";
    std::string scales = IsClickHouse() ? "SELECT *" : "SELECT accredit_sums.*";
    std::string centers = IsClickHouse() ? "SELECT *" : "SELECT accredit_scales.*";
    bool hasMoments = false;
    for (std::size_t i = piece.first; i < piece.last; ++i) {
        const StatementColumn& column = mColumns[i];
        if (!column.hasNumbers || (IsClickHouse() && !column.hasMoments)) continue;
        sums += EndsOf(i);
        if (TellsTexts(mHead.engine, column)) {
            sums += fmt::format(", {} AS accredit_t{}",
                                mDialect.CountIf(mDialect.IsText(Quoted(i))), i);
        }
        if (!column.hasMoments) continue;
        hasMoments = true;
        sums += fmt::format(", {} AS accredit_s{}", Summed(i), i);
        scales +=
            fmt::format(", {} AS accredit_f{}, {} AS accredit_a{}", ScaleFor(i), i, MeanFor(i), i);
        centers += fmt::format(", {} AS accredit_m{}", CenterFor(i), i);
    }
    sums += "\nFROM " + mFrom;
    if (!hasMoments) return sums;
    return fmt::format("{}\nFROM ({}\nFROM ({}) accredit_sums) accredit_scales", centers, scales,
                       sums);
}

std::string Writer::MoreOf(std::size_t i, const std::string& from) const {
    const StatementColumn& column = mColumns[i];
    std::string sql;
    if (!column.hasNumbers) return sql;
    for (std::size_t k = 0; k < column.cutPoints.size(); ++k) {
        sql += fmt::format(", {} AS accredit_b{}_{}",
                           mDialect.CountAtMost(Value(i), column.cutPoints[k]).sql, i, k);
    }
    if (!column.hasMoments) return sql;
    const std::string deviation = Deviation(i, from).sql;
    return sql + fmt::format(", SUM({0}) AS accredit_d{2}, SUM({1}) AS accredit_q{2}", deviation,
                             Square(deviation), i);
}

// Makes a row of every answer of one row.
std::string Writer::Rotated(const std::vector<Row>& rows, const std::string& from) const {
    std::vector<std::string> list;
    std::string keys;
    std::string counts;
    const bool hasValues = mHead.engine == Engine::PostgreSql || mHead.engine == Engine::Ansi;
    for (std::size_t n = 0; n < rows.size(); ++n) {
        const Row& row = rows[n];
        const std::string part = mDialect.Text(row.part);
        const std::string key = mDialect.Text(row.key);
        if (hasValues) {
            list.push_back(fmt::format("({}, {}, {}, {})", n, row.column, part, key));
        } else if (n == 0) {
            list.push_back(
                fmt::format("SELECT {} AS accredit_number, {} AS accredit_column, {} AS "
                            "accredit_part, {} AS accredit_key",
                            n, row.column, part, key));
        } else {
            list.push_back(fmt::format("SELECT {}, {}, {}, {}", n, row.column, part, key));
        }
        if (!row.keySql.empty()) keys += fmt::format("\n WHEN {} THEN {}", n, row.keySql);
        if (!row.countSql.empty()) counts += fmt::format("\n WHEN {} THEN {}", n, row.countSql);
    }
    const auto chosen = [](const std::string& whens, const char* other) {
        return whens.empty()
                   ? std::string(other)
                   : fmt::format("CASE accredit_list.accredit_number{} ELSE {} END", whens, other);
    };
    return fmt::format(
        "SELECT accredit_list.accredit_column, accredit_list.accredit_part, {} AS accredit_key, {} "
        "AS accredit_count FROM {} CROSS JOIN ({}) {}",
        chosen(keys, "accredit_list.accredit_key"), chosen(counts, "1"), from,
        hasValues ? "VALUES " + Join(list, ",\n ") : Join(list, " UNION ALL\n "),
        hasValues ? "accredit_list (accredit_number, accredit_column, accredit_part, accredit_key)"
                  : "accredit_list");
}

void Writer::AddCommon(const Piece& piece) {
    const std::string center = fmt::format("accredit_center{}", piece.number);
    mCommon.push_back(fmt::format("{} AS ({})", center, CentersOf(piece)));
    std::string more;
    for (std::size_t i = piece.first; i < piece.last; ++i) {
        mPieceOf[i] = piece.number;
        more += MoreOf(i, center + ".");
    }
    std::string from = center;
    if (!more.empty()) {
        mCommon.push_back(
            fmt::format("accredit_more{} AS (SELECT COUNT(*) AS accredit_rows{}\nFROM {} CROSS "
                        "JOIN {})",
                        piece.number, more, mFrom, center));
        from += fmt::format(" CROSS JOIN accredit_more{}", piece.number);
    }
    mParts.push_back(Rotated(RowsOf(piece), from));
}

// Of ClickHouse a row becomes rows by an array of tuples. What is needed before the scan is joined,
// which hands it to the nodes as it is: a constant would be evaluated again and again, and be sent
// in digits that are read as other numbers.
std::string Writer::ClickHousePart(const Piece& piece) const {
    bool hasMoments = false;
    std::string sums = "SELECT count() AS accredit_rows";
    for (std::size_t i = piece.first; i < piece.last; ++i) {
        const StatementColumn& column = mColumns[i];
        if (TellsType(mHead.engine, column)) {
            sums += fmt::format(", max({}) AS accredit_y{}", mDialect.TypeOf(Quoted(i), mFrom), i);
        }
        if (!column.hasNumbers) continue;
        sums += EndsOf(i) + MoreOf(i, "");
        if (!column.hasMoments) continue;
        hasMoments = true;
        sums += fmt::format(
            ", max(accredit_m{0}) AS accredit_center{0}, max(accredit_f{0}) AS "
            "accredit_scale{0}",
            i);
    }
    sums += "\nFROM " + mFrom;
    if (hasMoments) sums += fmt::format(" GLOBAL CROSS JOIN (\n{})", CentersOf(piece));
    std::vector<std::string> tuples;
    for (const Row& row : RowsOf(piece)) {
        const std::string key = row.part == AnswerRow::kType
                                    ? fmt::format("accredit_y{}", row.column - 1)
                                : row.keySql.empty() ? mDialect.Text(row.key)
                                                     : fmt::format("ifNull({}, '')", row.keySql);
        tuples.push_back(fmt::format("(toUInt32({}), {}, {}, toUInt64(ifNull({}, 0)))", row.column,
                                     mDialect.Text(row.part), key,
                                     row.countSql.empty() ? "1" : row.countSql));
    }
    return fmt::format(
        "SELECT accredit_row.1 AS accredit_column, accredit_row.2 AS accredit_part, accredit_row.3 "
        "AS accredit_key, accredit_row.4 AS accredit_count FROM (SELECT arrayJoin([{}]) AS "
        "accredit_row FROM ({}))",
        Join(tuples, ",\n "), sums);
}

// Equal values of a column, NULL among them, with how many they are. More than may be kept are a
// sign that they are too many.
std::string Writer::GroupPart(std::size_t i, Grouped grouped, bool onlyBesideTexts) const {
    const StatementColumn& column = mColumns[i];
    const std::string quoted = Quoted(i);
    const std::string key = mDialect.AsKey(quoted, column.storage, mHead.engine == Engine::MySql);
    std::string from = mFrom;
    if (grouped != Grouped::All && mHead.engine == Engine::MySql) {
        from = fmt::format(
            "(SELECT {} AS accredit_type) accredit_guard STRAIGHT_JOIN {} ON "
            "accredit_guard.accredit_type = 'text'",
            mDialect.TypeOf(quoted, mFrom), mFrom);
    } else if (grouped != Grouped::All) {
        const std::string condition =
            grouped == Grouped::Texts ? mDialect.IsText(quoted) : Value(i) + " IS NOT NULL";
        // The other table is looked at first, so that columns without texts are not read again.
        from = onlyBesideTexts ? fmt::format(
                                     "accredit_center{0} CROSS JOIN {1} WHERE "
                                     "accredit_center{0}.accredit_t{2} > 0 AND {3}",
                                     mPieceOf[i], mFrom, i, condition)
                               : fmt::format("{} WHERE {}", mFrom, condition);
    }
    const std::string shown = mDialect.ShownKey("accredit_value", column.storage);
    const std::string groups = fmt::format(
        "SELECT {0} AS accredit_value, COUNT(*) AS accredit_cases FROM {1} GROUP BY {0}{2}", key,
        from, mDialect.Limit(MaxCategories() + 2));
    const std::string_view part =
        grouped == Grouped::Numbers ? AnswerRow::kNumber : AnswerRow::kGroup;
    if (IsClickHouse()) {
        return fmt::format(
            "SELECT toUInt32({}) AS accredit_column, if(isNull(accredit_value), '{}', '{}') AS "
            "accredit_part, ifNull({}, '') AS accredit_key, toUInt64(accredit_cases) AS "
            "accredit_count FROM ({})",
            i + 1, AnswerRow::kNull, part, shown, groups);
    }
    return fmt::format(
        "SELECT {}, CASE WHEN accredit_value IS NULL THEN '{}' ELSE '{}' END, {}, accredit_cases "
        "FROM ({}) accredit_groups",
        i + 1, AnswerRow::kNull, part, shown, groups);
}

void Writer::AddGroups(std::size_t i) {
    const StatementColumn& column = mColumns[i];
    if (column.groups == Groups::All) mParts.push_back(GroupPart(i, Grouped::All, false));
    if (column.groups == Groups::None || column.groups == Groups::All) return;
    const bool isGuarded = mHead.engine == Engine::MySql && column.storage == Storage::Any;
    if (!isGuarded && !TellsTexts(mHead.engine, column)) return;
    mParts.push_back(GroupPart(i, Grouped::Texts, true));
    if (column.groups == Groups::Texts) return;
    mParts.push_back(
        GroupPart(i, Grouped::Numbers, column.groups == Groups::NumbersOnlyBesideTexts));
}

std::string Writer::Union(std::vector<std::string> parts) const {
    while (parts.size() > kMaxParts) {
        std::vector<std::string> blocks;
        for (std::size_t i = 0; i < parts.size(); i += kMaxParts) {
            const auto begin = parts.begin() + static_cast<std::ptrdiff_t>(i);
            const auto end =
                begin + static_cast<std::ptrdiff_t>(std::min(kMaxParts, parts.size() - i));
            const std::string block = Join({begin, end}, "\nUNION ALL\n");
            blocks.push_back(
                fmt::format("SELECT * FROM ({}){}", block,
                            IsClickHouse() ? "" : fmt::format(" accredit_block{}", i)));
        }
        parts = std::move(blocks);
    }
    return Join(parts, "\nUNION ALL\n");
}

std::string Writer::Text() {
    const std::vector<std::size_t> ends = PiecesOf(mColumns);
    std::size_t first = 0;
    for (std::size_t number = 0; number < ends.size(); ++number) {
        const Piece piece{first, ends[number], number, number == 0};
        if (IsClickHouse()) {
            mParts.push_back(ClickHousePart(piece));
        } else {
            AddCommon(piece);
        }
        first = ends[number];
    }
    for (std::size_t i = 0; i < mColumns.size(); ++i) {
        AddGroups(i);
    }
    std::string sql = mCommon.empty() ? "" : "WITH " + Join(mCommon, ",\n") + "\n";
    sql += Union(std::move(mParts));
    if (IsClickHouse() && sql.size() >= kClickHouseBytes) {
        sql = fmt::format(
            "-- clickhouse-client options: --max_query_size {0} --max_ast_elements {0} "
            "--max_expanded_ast_elements {1}\n{2}",
            2 * sql.size(), 20 * sql.size(), sql);
    }
    return sql + (IsClickHouse() ? "\n" : ";\n");
}

}  // namespace

std::vector<std::size_t> PiecesOf(const std::vector<StatementColumn>& columns) {
    std::vector<std::size_t> ends;
    std::size_t answers = 0;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const std::size_t more = 10 + columns[i].cutPoints.size();
        if (answers > 0 && answers + more > kMaxAnswers) {
            ends.push_back(i);
            answers = 0;
        }
        answers += more;
    }
    ends.push_back(columns.size());
    return ends;
}

std::vector<Part> PartsOf(const StatementColumn& column) {
    if (!column.hasNumbers) return {};
    std::vector<Part> parts = {Part::Count, Part::Minimum, Part::Maximum};
    if (column.hasMoments) {
        parts.insert(parts.end(), {Part::Center, Part::Scale, Part::Deviation, Part::Square});
    }
    return parts;
}

bool TellsType(Engine engine, const StatementColumn& column) {
    return column.storage == Storage::Any &&
           (engine == Engine::MySql || engine == Engine::ClickHouse ||
            (engine == Engine::PostgreSql && !column.hasNumbers));
}

bool TellsTexts(Engine engine, const StatementColumn& column) {
    return engine == Engine::Sqlite && column.hasNumbers;
}

namespace {

// Between the name and the type, where it is part of neither.
constexpr std::string_view kBetween = ":";
constexpr std::string_view kBetweenPercent = "]%[";

std::string ColumnRows(const StatementHead& head, const std::string& table) {
    const Dialect dialect(head.engine, Dialect::Numbers::Literal);
    std::vector<std::string> parts = dialect.PartsOf(table);
    for (const std::string& part : parts) RequirePlain(part, "--table:");
    const std::string name = dialect.Text(parts.back());
    parts.pop_back();
    const std::string schema = parts.empty() ? "" : dialect.Text(parts.back());
    const auto row = [](const std::string& number, const std::string& key) {
        return fmt::format("SELECT {}, '{}', {}, 1 FROM ", number, AnswerRow::kColumn, key);
    };
    const auto hex = [&dialect](const std::string& text) {
        return dialect.ShownKey(text, Storage::Text);
    };
    switch (head.engine) {
        case Engine::PostgreSql:
            return row("CAST(ROW_NUMBER() OVER (ORDER BY attnum) AS integer)",
                       hex("CAST(attname AS text)") + " || ':' || " +
                           hex("format_type(atttypid, NULL)")) +
                   fmt::format(
                       "pg_attribute WHERE attrelid = CAST({} AS regclass) AND attnum > 0 "
                       "AND NOT attisdropped",
                       dialect.Text(dialect.TableName(table)));
        case Engine::MySql:
            return row("ORDINAL_POSITION",
                       fmt::format("CONCAT({}, ':', {})",
                                   hex(dialect.AsKey("COLUMN_NAME", Storage::Text)),
                                   hex(dialect.AsKey("DATA_TYPE", Storage::Text)))) +
                   fmt::format(
                       "information_schema.COLUMNS WHERE TABLE_NAME = {} AND TABLE_SCHEMA "
                       "= {}",
                       name, schema.empty() ? "DATABASE()" : schema);
        case Engine::Sqlite:
            return row("cid + 1", "hex(name) || ':' || hex(type)") +
                   fmt::format("pragma_table_xinfo({}{}) WHERE hidden <> 1", name,
                               schema.empty() ? "" : ", " + schema);
        case Engine::ClickHouse:
            return fmt::format(
                "SELECT toUInt32(rowNumberInAllBlocks() + 1) AS accredit_column, '{}' AS "
                "accredit_part, concat(hex(name), ':', hex(type)) AS accredit_key, toUInt64(1) AS "
                "accredit_count FROM system.columns WHERE table = {} AND database = {}",
                AnswerRow::kColumn, name, schema.empty() ? "currentDatabase()" : schema);
        case Engine::Ansi:
            break;
    }
    return row("ORDINAL_POSITION", hex("COLUMN_NAME") + " || '%' || " + hex("DATA_TYPE")) +
           "INFORMATION_SCHEMA.COLUMNS WHERE TABLE_NAME = " + name +
           (schema.empty() ? "" : " AND TABLE_SCHEMA = " + schema);
}

bool Has(std::string_view text, std::initializer_list<std::string_view> parts) {
    return std::any_of(parts.begin(), parts.end(), [text](std::string_view part) {
        return text.find(part) != std::string_view::npos;
    });
}

}  // namespace

std::string WriteColumnsStatement(const StatementHead& head) {
    const std::size_t blank = head.source.find(' ');
    if (head.source.substr(0, blank) != "table") {
        throw UsageError(
            "--query: only of a table can the engine tell the columns; CREATE VIEW makes one of "
            "the query");
    }
    const Dialect dialect(head.engine, Dialect::Numbers::Literal);
    std::vector<std::string> parts;
    for (const Row& row : HeadRows(head)) {
        const char* const form =
            head.engine == Engine::ClickHouse
                ? "SELECT toUInt32({}) AS accredit_column, {} AS accredit_part, {} AS "
                  "accredit_key, toUInt64(1) AS accredit_count"
            : head.engine == Engine::Ansi
                ? "SELECT accredit_head.* FROM (VALUES ({}, {}, {}, 1)) accredit_head "
                  "(accredit_column, accredit_part, accredit_key, accredit_count)"
                : "SELECT {} AS accredit_column, {} AS accredit_part, {} AS accredit_key, 1 AS "
                  "accredit_count";
        parts.push_back(fmt::format(fmt::runtime(form), row.column, dialect.Text(row.part),
                                    dialect.Text(row.key)));
    }
    parts.push_back(ColumnRows(head, head.source.substr(blank + 1)));
    return Join(parts, "\nUNION ALL\n") + (head.engine == Engine::ClickHouse ? "\n" : ";\n");
}

std::optional<std::pair<std::string, std::string>> DecodeColumnKey(std::string_view key) {
    std::size_t at = key.find(kBetweenPercent);
    std::size_t end = at + kBetweenPercent.size() - 1;
    if (at != std::string_view::npos) {
        ++at;
    } else {
        at = key.find(kBetween);
        end = at + kBetween.size();
    }
    if (at == std::string_view::npos) return std::nullopt;
    const std::optional<Key> name = DecodeKey(key.substr(0, at));
    const std::optional<Key> type = DecodeKey(key.substr(end));
    if (!name || !type) return std::nullopt;
    return std::make_pair(name->text, type->text);
}

Storage StorageOfType(Engine engine, std::string_view name) {
    if (engine == Engine::Sqlite) return Storage::Any;
    std::string type;
    for (const char c : name) {
        type += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    for (const std::string_view around : {"nullable(", "lowcardinality("}) {
        if (engine == Engine::ClickHouse && type.rfind(around, 0) == 0 && type.back() == ')') {
            type = type.substr(around.size(), type.size() - around.size() - 1);
        }
    }
    if (Has(type, {"[]", "array", "tuple", "map(", "binary", "blob", "bytea", "range", "point"})) {
        return Storage::Other;
    }
    if (type == "double precision" || type == "double" || type == "float64") return Storage::Double;
    if (Has(type, {"bool"})) return Storage::Boolean;
    if (Has(type, {"date", "time", "interval"})) return Storage::Date;
    if (Has(type, {"char", "text", "string", "enum", "uuid", "clob", "json"}) || type == "name" ||
        type == "set") {
        return Storage::Text;
    }
    if (type == "year" ||
        Has(type, {"int", "float", "real", "numeric", "decimal", "number", "double"})) {
        return Storage::Number;
    }
    return Storage::Other;
}

std::string WriteStatement(const StatementHead& head, const std::vector<StatementColumn>& columns) {
    return Writer(head, columns).Text();
}

}  // namespace app
