#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "accredit/host/MCQueryCancel.h"
#include "app/base/Errors.h"
#include "app/sql/Dialect.h"

namespace app {

/// An engine refused a connection or a query. The text has the engine's own words and what to do.
class SqlError : public InputError {
public:
    SqlError(const std::string& text, std::string state)
        : InputError(text), mState(std::move(state)) {}

    /// The SQLSTATE, five characters; empty if there is none.
    const std::string& State() const { return mState; }

private:
    std::string mState;
};

/// Where a table lies and how it is asked.
struct SqlOptions {
    std::string connection;   ///< As ODBC takes it, or "sqlite:FILE". Without a password.
    std::string table;        ///< Its name, or
    std::string query;        ///< a SELECT in its place.
    std::string shardBy;      ///< The column that every query is grouped by; empty for none.
    double timeout = 3600.0;  ///< Seconds that a query may take; 0 for no limit.
    bool isVerbose = false;   ///< Whether every query is shown.
};

/// A column of a query's result.
struct ResultColumn {
    std::string name;
    Storage storage = Storage::Other;
    std::string type;  ///< As the engine calls it.
};

/// The names of all columns, in their order.
std::vector<std::string> NamesOf(const std::vector<ResultColumn>& columns);

/// A value of a result: a text or a number as the query's caller wants it, or NULL.
struct SqlValue {
    bool isNull = false;
    std::string text = {};
    double number = 0.0;
};

/// What each column of a result is read as: a number, or a text of UTF-8.
enum class ReadAs { Number, Text };

/// A connection to an engine over ODBC, in one transaction that only reads and sees the data as it
/// was at its beginning, as far as the engine has such. An object is used by one thread.
class Connection {
public:
    /// Whether this program was built with ODBC.
    static bool IsThere();

    /// Connects. The password is that of the environment variable ACCREDIT_PASSWORD, if it is
    /// there. `wait` is called ten times a second while the engine works, and `cancel` asked; both
    /// must outlive this. Throws UsageError for a connection text with a password, SqlError,
    /// Cancelled.
    Connection(const SqlOptions& options, std::function<void()> wait, MCQueryCancel& cancel);
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection();

    /// What the engine understands.
    const Dialect& GetDialect() const;
    /// The product and its version: "PostgreSQL 15.18".
    const std::string& Product() const;

    /// The columns of a query, which is prepared and has no rows. Throws SqlError, Cancelled.
    std::vector<ResultColumn> Describe(const std::string& sql);

    /// Runs a query to its end and hands over its rows one by one, each with as many values as
    /// `columns` has entries. The time-out and an interrupt make the engine stop. Throws SqlError,
    /// Cancelled, and what `take` throws.
    void Run(const Expression& sql, const std::vector<ReadAs>& columns,
             const std::function<void(const std::vector<SqlValue>&)>& take);

    /// Runs a statement without a result. Throws SqlError, Cancelled.
    void Execute(const std::string& sql);

    /// Whether a query that did not end when it was told to is still running. The program must then
    /// end without waiting for it.
    static bool IsStuck();

private:
    struct State;

    std::shared_ptr<State> mState;
};

}  // namespace app
