#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "accredit/host/MCQueryCancel.h"
#include "app/base/Progress.h"
#include "app/sql/Connection.h"
#include "app/sql/TableSummary.h"

namespace app {

/// A table, or a query in its place, that is asked over a connection. Every query is grouped by the
/// column of the shards, if there is one, and the groups are added up here in the order of its
/// values, so that the same table gives the same bits.
class TableQueries {
public:
    /// Connects and begins to read. `progress`, `cancel` and `log`, which takes every query where
    /// `options` say so, must outlive this. Throws UsageError, SqlError, Cancelled.
    TableQueries(const SqlOptions& options, Progress& progress, MCQueryCancel& cancel,
                 std::ostream* log);
    TableQueries(const TableQueries&) = delete;
    TableQueries& operator=(const TableQueries&) = delete;

    /// The table's name, or "query", fit to be shown.
    const std::string& Name() const { return mName; }
    const std::vector<ResultColumn>& Columns() const { return mColumns; }
    const Dialect& GetDialect() const { return mDialect; }
    /// The name of the column that tells the shards apart; empty for none.
    const std::string& ShardBy() const { return mShardBy; }
    /// Whether nodes may answer by themselves.
    bool HasNodes() const { return mHasNodes; }
    /// The rows that the first question has found. Every later one must find as many.
    std::uint64_t Rows() const { return mRows.value_or(0); }

    /// Says that so many queries are still to come, as far as it is known.
    void Expect(std::size_t queries);

    /// Asks, in as few queries as there may be, and puts the answers to the columns of the
    /// questions. At least the rows are counted. Throws SqlError, InputError for a table that
    /// changed since the first question, Cancelled.
    void Ask(const std::vector<Question>& questions, std::vector<ColumnAnswer>& answers);
    /// How many queries that takes.
    static std::size_t QueriesFor(std::size_t questions);

    /// Groups the rows that fulfil the condition, all if it is empty, by a key, NULL aside, and
    /// puts the groups to the answer. False, and nothing is put, if there are more than
    /// MaxCategories. Takes two queries. The same exceptions.
    bool AskGroups(const std::string& key, Storage storage, const std::string& condition,
                   ColumnAnswer& answer);

private:
    void Begin(const SqlOptions& options);
    Expression QueryFor(const std::vector<Question>& questions, std::size_t first, std::size_t last,
                        std::vector<ReadAs>& columns) const;
    void Run(const Expression& sql, const std::vector<ReadAs>& columns,
             const std::function<void(const std::vector<SqlValue>&)>& take);
    void Log(const Expression& sql, double seconds);
    void TakeRows(std::uint64_t rows);

    std::string mName;
    Progress& mProgress;
    std::ostream* mLog;
    std::size_t mQuery = 0;
    std::size_t mExpected = 0;
    std::chrono::steady_clock::time_point mBegin;
    Connection mConnection;
    Dialect mDialect;
    std::string mFrom;
    std::string mShardBy;
    std::string mShard;  // the same between quotes
    bool mHasNodes = false;
    std::vector<ResultColumn> mColumns;
    std::optional<std::uint64_t> mRows;
};

}  // namespace app
