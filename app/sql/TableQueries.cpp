#include "app/sql/TableQueries.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <ostream>
#include <set>
#include <string_view>
#include <utility>

#include "app/base/Printable.h"

namespace app {

namespace {

using Clock = std::chrono::steady_clock;

// Engines take between 1,600 and several thousand expressions a query.
constexpr std::size_t kMaxExpressions = 1000;
// So long is waited for a lock: longer than a transaction that only writes rows takes.
constexpr int kLockSeconds = 30;

// Of so many shards that all have every category as many categories are told apart as of one.
constexpr std::uint64_t kGroupsToOneCategory = 4;

}  // namespace

namespace {

// SQLite gives the second of two columns with one name another: "x:1".
void RequireOwnNames(const std::vector<ResultColumn>& columns, const std::string& tableName) {
    std::set<std::string_view> names;
    for (const ResultColumn& column : columns) {
        const std::string_view name = column.name;
        const std::size_t colon = name.rfind(':');
        const bool isRenamed =
            colon != std::string_view::npos && colon + 1 < name.size() &&
            name.find_first_not_of("0123456789", colon + 1) == std::string_view::npos &&
            names.count(name.substr(0, colon)) != 0;
        if (isRenamed) {
            throw InputError(
                fmt::format("{}: the column \"{}\" stands twice; AS gives one of them "
                            "another name",
                            tableName, Shortened(name.substr(0, colon))));
        }
        names.insert(name);
    }
}

// A text of several lines, whose names may come from a stranger's table.
std::string PrintableLines(std::string_view text) {
    std::string lines;
    for (;;) {
        const std::size_t end = text.find('\n');
        const std::string_view line = text.substr(0, end);
        const bool isPlain = std::all_of(line.begin(), line.end(), [](char c) {
            return static_cast<unsigned char>(c) >= 0x20 && static_cast<unsigned char>(c) < 0x7F;
        });
        lines += isPlain ? std::string(line) : Printable(line);
        if (end == std::string_view::npos) return lines;
        lines += '\n';
        text.remove_prefix(end + 1);
    }
}

}  // namespace

std::vector<std::string> NamesOf(const std::vector<ResultColumn>& columns) {
    std::vector<std::string> names;
    names.reserve(columns.size());
    for (const ResultColumn& column : columns) names.push_back(column.name);
    return names;
}

TableQueries::TableQueries(const SqlOptions& options, Progress& progress, MCQueryCancel& cancel,
                           std::ostream* log)
    : mName(options.table.empty() ? "query" : Printable(options.table)),
      mProgress(progress),
      mLog(options.isVerbose ? log : nullptr),
      mBegin(Clock::now()),
      mConnection(
          options,
          [this] {
              const std::chrono::duration<double> seconds = Clock::now() - mBegin;
              mProgress.UpdateQuery(mName, mQuery, mExpected, seconds.count());
          },
          cancel),
      mDialect(mConnection.GetDialect()),
      mFrom(options.table.empty() ? mDialect.Query(options.query) : mDialect.Table(options.table)),
      mShardBy(options.shardBy),
      mShard(options.shardBy.empty() ? "" : mDialect.Column(options.shardBy)) {
    Begin(options);
    // The driver of SQLite cuts names at points, unless there is a column of no table, too.
    const bool isCut = mDialect.GetEngine() == Dialect::Engine::Sqlite;
    mColumns = mConnection.Describe(
        fmt::format("SELECT *{} FROM {} WHERE 1 = 0", isCut ? ", 1 AS accredit_end" : "", mFrom));
    if (isCut) mColumns.pop_back();
    RequireOwnNames(mColumns, mName);
    if (options.shardBy.empty()) return;
    const bool isThere = std::any_of(
        mColumns.begin(), mColumns.end(),
        [&options](const ResultColumn& column) { return column.name == options.shardBy; });
    if (!isThere) {
        throw UsageError(
            fmt::format("--shard-by: {} has no column \"{}\"", mName, Shortened(options.shardBy)));
    }
}

// What an engine does not know of this is left out.
void TableQueries::Begin(const SqlOptions& options) {
    std::vector<std::string> required;
    std::vector<std::string> wished;
    switch (mDialect.GetEngine()) {
        case Dialect::Engine::PostgreSql:
            required = {"SET TRANSACTION ISOLATION LEVEL REPEATABLE READ, READ ONLY",
                        fmt::format("SET LOCAL lock_timeout = '{}s'", kLockSeconds)};
            // Without this the rows of all nodes would be fetched.
            if (!options.shardBy.empty()) {
                required.emplace_back("SET LOCAL enable_partitionwise_aggregate = on");
            }
            break;
        case Dialect::Engine::MySql:
            // Spider asks all nodes at the same time.
            wished = {"SET SESSION spider_bgs_mode = 2"};
            required = {fmt::format("SET SESSION lock_wait_timeout = {}", kLockSeconds),
                        "SET SESSION TRANSACTION ISOLATION LEVEL REPEATABLE READ",
                        "START TRANSACTION WITH CONSISTENT SNAPSHOT, READ ONLY"};
            break;
        case Dialect::Engine::Sqlite:
            required = {"PRAGMA query_only = 1"};
            break;
        default:
            break;
    }
    for (const std::string& statement : wished) {
        try {
            mConnection.Execute(statement);
        } catch (const SqlError&) {
        }
    }
    for (const std::string& statement : required) mConnection.Execute(statement);
    mHasNodes = !options.shardBy.empty();
    if (mDialect.GetEngine() != Dialect::Engine::MySql) return;
    mConnection.Run({"SELECT COUNT(*) FROM information_schema.ENGINES WHERE ENGINE = 'SPIDER' AND "
                     "SUPPORT <> 'NO'"},
                    {ReadAs::Number},
                    [this](const std::vector<SqlValue>& row) { mHasNodes = row[0].number > 0.0; });
}

void TableQueries::Expect(std::size_t queries) { mExpected = mQuery + queries; }

std::size_t TableQueries::QueriesFor(std::size_t questions) {
    return std::max<std::size_t>(1, (questions + kMaxExpressions - 2) / (kMaxExpressions - 1));
}

void TableQueries::Log(const Expression& sql, double seconds) {
    if (!mLog) return;
    mProgress.Erase();
    std::string numbers;
    for (const double number : sql.numbers) {
        numbers += fmt::format("{}{}", numbers.empty() ? "; with " : ", ", number);
    }
    *mLog << fmt::format("-- query {} of {}, {:.3f} s{}\n{};\n", mQuery, mExpected, seconds,
                         Printable(numbers), PrintableLines(sql.sql))
          << std::flush;
}

void TableQueries::Run(const Expression& sql, const std::vector<ReadAs>& columns,
                       const std::function<void(const std::vector<SqlValue>&)>& take) {
    mExpected = std::max(mExpected, ++mQuery);
    const auto begin = Clock::now();
    mConnection.Run(sql, columns, take);
    Log(sql, std::chrono::duration<double>(Clock::now() - begin).count());
}

void TableQueries::TakeRows(std::uint64_t rows) {
    if (!mRows) mRows = rows;
    if (*mRows != rows) RefuseChangedTable(mName);
}

Expression TableQueries::QueryFor(const std::vector<Question>& questions, std::size_t first,
                                  std::size_t last, std::vector<ReadAs>& columns) const {
    Expression sql{"SELECT "};
    // The driver of SQLite cuts numbers at 15 digits, but not texts.
    const bool asText = mDialect.GetEngine() == Dialect::Engine::Sqlite;
    std::string texts = "SELECT ";
    columns.clear();
    if (!mShard.empty()) {
        sql += mDialect.ShownKey(mDialect.AsKey(mShard, Storage::Other), Storage::Other) +
               " AS accredit_shard, ";
        texts += "accredit_shard, ";
        columns.push_back(ReadAs::Text);
    }
    texts += "accredit_rows";
    sql += "COUNT(*) AS accredit_rows";
    columns.push_back(ReadAs::Number);
    for (std::size_t i = first; i < last; ++i) {
        sql += ", ";
        sql += questions[i].expression;
        columns.push_back(ReadAs::Number);
        if (!asText) continue;
        const std::string name = fmt::format("accredit_{}", i - first);
        sql += " AS " + name;
        texts += ", " + (IsDouble(questions[i].part) ? mDialect.AsText(name) : name);
    }
    sql += " FROM " + mFrom;
    if (!mShard.empty()) sql += " GROUP BY " + mShard;
    if (!asText) return sql;
    return {texts + " FROM (" + sql.sql + ") accredit_answers", std::move(sql.numbers)};
}

void TableQueries::Ask(const std::vector<Question>& questions, std::vector<ColumnAnswer>& answers) {
    if (questions.empty() && mRows) return;
    const std::size_t perQuery = kMaxExpressions - 1;
    std::size_t first = 0;
    do {
        const std::size_t last = std::min(questions.size(), first + perQuery);
        std::vector<ReadAs> columns;
        const Expression sql = QueryFor(questions, first, last, columns);
        // In the order of the shards, which an engine does not keep.
        std::map<std::string, std::vector<SqlValue>> rows;
        Run(sql, columns, [&](const std::vector<SqlValue>& row) {
            rows[mShard.empty() || row[0].isNull ? "" : "=" + row[0].text] = row;
        });
        std::uint64_t count = 0;
        for (const auto& [shard, row] : rows) {
            std::size_t at = mShard.empty() ? 0 : 1;
            ColumnAnswer all;
            bool isGood = all.Take(Part::Count, 0, row[at].number);
            count += all.count;
            for (std::size_t i = first; i < last; ++i) {
                const Question& question = questions[i];
                const SqlValue& value = row[++at];
                ColumnAnswer& answer = answers[question.column];
                isGood = answer.Take(question.part, question.index,
                                     value.isNull ? std::nullopt : std::optional(value.number)) &&
                         isGood;
            }
            if (!isGood) throw InputError(mName + ": the engine counted what is no whole number");
        }
        TakeRows(count);
        first = last;
    } while (first < questions.size());
}

bool TableQueries::AskGroups(const std::string& key, Storage storage, const std::string& condition,
                             ColumnAnswer& answer) {
    const std::string rows = mFrom + (condition.empty() ? "" : " WHERE " + condition);
    // One of the groups may be NULL. Shards that have the same categories have more groups.
    const std::uint64_t most = (mShard.empty() ? 1 : kGroupsToOneCategory) * (MaxCategories() + 1);
    const std::string limit = mDialect.Limit(most + 1);
    // The engine stops as soon as there are too many, but the nodes of shards group all that they
    // have: only what is grouped is done by themselves.
    const Expression distinct{fmt::format(
        mShard.empty()
            ? "SELECT COUNT(*) FROM (SELECT DISTINCT {0} AS accredit_key FROM {1}{2}) accredit_keys"
            : "SELECT COUNT(*) FROM (SELECT {3} AS accredit_shard, {0} AS accredit_key FROM {1} "
              "GROUP BY {3}, {0}{2}) accredit_keys",
        key, rows, limit, mShard)};
    double different = 0.0;
    Run(distinct, {ReadAs::Number},
        [&different](const std::vector<SqlValue>& row) { different = row[0].number; });
    if (different > static_cast<double>(most)) return false;

    const std::string shard = mShard.empty() ? "" : mShard + " AS accredit_shard, ";
    const std::string groups = mShard.empty() ? key : mShard + ", " + key;
    const Expression sql{fmt::format(
        "SELECT {}, accredit_count FROM (SELECT {}{} AS accredit_key, COUNT(*) AS accredit_count "
        "FROM {} GROUP BY {}{}) accredit_groups",
        mDialect.ShownKey("accredit_key", storage), shard, key, rows, groups, limit)};
    std::map<std::string, std::uint64_t> found;
    std::uint64_t count = 0;
    bool isGood = true;
    Run(sql, {ReadAs::Text, ReadAs::Number}, [&](const std::vector<SqlValue>& row) {
        ColumnAnswer one;
        isGood = isGood && one.Take(Part::Count, 0, row[1].number);
        count += one.count;
        if (row[0].isNull) return;
        if (found.size() > MaxCategories()) return;
        found[row[0].text] += one.count;
    });
    if (!isGood) throw InputError(mName + ": the engine counted what is no whole number");
    if (found.size() > MaxCategories()) return false;
    if (condition.empty()) TakeRows(count);
    for (const auto& [shown, cases] : found) {
        const std::optional<Key> decoded = DecodeKey(shown);
        if (!decoded) throw InputError(mName + ": the engine answered what is no category");
        answer.groups.push_back({*decoded, cases});
    }
    return true;
}

}  // namespace app
