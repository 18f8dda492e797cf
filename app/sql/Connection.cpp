// The plain ODBC interface. All texts are asked for as bytes of UTF-8.
#include "app/sql/Connection.h"

#include <fmt/format.h>
#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cctype>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <limits>
#include <mutex>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include "accredit/documents/NumberText.h"
#include "app/base/Printable.h"

namespace app {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kBeat = std::chrono::milliseconds(100);
// An engine that does not stop a query in so long, when it is told to, is not waited for.
constexpr auto kPatience = std::chrono::seconds(10);
constexpr SQLULEN kLoginSeconds = 30;
constexpr const char* kPasswordVariable = "ACCREDIT_PASSWORD";

std::atomic<bool> isStuck{false};

SQLCHAR* Text(const std::string& text) {
    // ODBC takes what it only reads as writable bytes.
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast)
    return reinterpret_cast<SQLCHAR*>(const_cast<char*>(text.c_str()));
}

// A value of a connection text between braces, within which a closing one is doubled.
std::string Braced(std::string_view value) {
    std::string braced = "{";
    for (const char c : value) {
        if (c == '}') braced += c;
        braced += c;
    }
    return braced + "}";
}

// Whether a password is named anywhere in a connection text, however drivers take it apart.
bool NamesPassword(std::string_view text) {
    const std::string lower = Lower(text);
    for (const std::string_view key : {"pwd", "password"}) {
        for (std::size_t at = 0; (at = lower.find(key, at)) != std::string::npos;) {
            at = lower.find_first_not_of(" \t", at + key.size());
            if (at == std::string::npos) break;
            if (lower[at] == '=') return true;
        }
    }
    return false;
}

// A file that is not there would be made.
std::string SqliteConnection(const std::string& path, double timeout) {
    std::error_code ignored;
    const std::string name = Printable(path);
    if (!std::filesystem::exists(path, ignored)) {
        throw InputError(name + ": there is no such file");
    }
    if (std::filesystem::is_directory(path, ignored)) {
        throw InputError(name + ": this is a folder");
    }
    if (path.find(';') != std::string::npos) {
        throw InputError(name +
                         ": the driver takes no name with a semicolon; a link to the file may "
                         "have another one");
    }
    // The driver waits for a lock two times, and cannot be told to stop.
    constexpr double kLockMilliseconds = 15000.0;
    const double wait =
        timeout > 0.0 ? std::min(kLockMilliseconds, 500.0 * timeout) : kLockMilliseconds;
    return fmt::format("Driver=SQLite3;NoCreat=1;Timeout={:.0f};Database={}", wait, path);
}

std::string ConnectionText(const std::string& given, const std::string& password, double timeout) {
    constexpr std::string_view kSqlite = "sqlite:";
    if (given.compare(0, kSqlite.size(), kSqlite) == 0) {
        return SqliteConnection(given.substr(kSqlite.size()), timeout);
    }
    if (NamesPassword(given)) {
        throw UsageError(fmt::format(
            "--sql: a password on the command line can be seen by others; put it into the "
            "environment variable {} or into odbc.ini",
            kPasswordVariable));
    }
    return password.empty() ? given : given + ";PWD=" + Braced(password);
}

std::string WithoutPassword(std::string words, const std::string& password) {
    if (password.empty()) return words;
    for (std::size_t at = 0; (at = words.find(password, at)) != std::string::npos; at += 3) {
        words.replace(at, password.size(), "***");
    }
    return words;
}

// A thread that is waited for at the end, unless it is left behind.
class Worker {
public:
    explicit Worker(std::packaged_task<void()> task) : mThread(std::move(task)) {}
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;
    ~Worker() {
        if (mThread.joinable()) mThread.join();
    }

    void Leave() { mThread.detach(); }

private:
    std::thread mThread;
};

struct Failure {
    std::string state;
    std::string words;
};

// The engine's words without the names of the layers that pass them on, which stand before them in
// brackets.
std::string WithoutLayers(std::string_view words) {
    while (!words.empty() && words.front() == '[') {
        const std::size_t end = words.find(']');
        if (end == std::string_view::npos) break;
        words.remove_prefix(end + 1);
        words = MADocuments::TrimBlanks(words);
    }
    // One driver adds a line of its own that says nothing more.
    words = words.substr(0, words.find(";\nError while executing the query"));
    std::string line;
    for (const char c : words) {
        const bool isBlank = std::isspace(static_cast<unsigned char>(c)) != 0;
        if (!isBlank || (!line.empty() && line.back() != ' ')) line += isBlank ? ' ' : c;
    }
    return std::string(MADocuments::TrimBlanks(line));
}

Failure FailureOf(SQLSMALLINT type, SQLHANDLE handle, const std::string& password) {
    Failure failure;
    std::array<SQLCHAR, 6> state{};
    std::array<SQLCHAR, 2048> text{};
    for (SQLSMALLINT i = 1; i <= 4; ++i) {
        SQLINTEGER native = 0;
        SQLSMALLINT length = 0;
        if (!SQL_SUCCEEDED(SQLGetDiagRec(type, handle, i, state.data(), &native, text.data(),
                                         static_cast<SQLSMALLINT>(text.size()), &length))) {
            break;
        }
        const std::string words =
            WithoutLayers(WithoutPassword(reinterpret_cast<const char*>(text.data()), password));
        if (failure.state.empty()) failure.state = reinterpret_cast<const char*>(state.data());
        if (failure.words.find(words) != std::string::npos) continue;
        failure.words += (failure.words.empty() ? "" : "; ") + words;
    }
    if (failure.words.empty()) failure.words = "the driver does not say why";
    return failure;
}

bool Contains(const std::string& text, std::initializer_list<const char*> parts) {
    return std::any_of(parts.begin(), parts.end(),
                       [&text](const char* part) { return text.find(part) != std::string::npos; });
}

// What to do about a failure. Engines of which the driver gives no proper state are known by their
// words.
std::string Remedy(const Failure& failure) {
    const std::string& state = failure.state;
    const std::string words = Lower(failure.words);
    if (Contains(words, {"file is not a database"})) {
        return "a file of another kind, such as CSV, is given without --sql";
    }
    if (Contains(words, {"sqldescribeparam", "unbound parameters", "parameter marker"})) {
        return "a question mark in --query is taken for a parameter";
    }
    if (state == "IM002") {
        return "is the driver installed? 'odbcinst -q -d' lists those that are, 'odbcinst -q -s' "
               "the "
               "data sources; a file of SQLite is given as sqlite:FILE";
    }
    if (Contains(words, {"can't open lib"})) {
        return "is the driver installed? 'odbcinst -q -d' lists those that are, 'odbcinst -q -s' "
               "the data sources";
    }
    if (state.compare(0, 2, "28") == 0 ||
        Contains(words, {"password", "authentication", "access denied for user"})) {
        return fmt::format(
            "give the user as Uid=NAME and the password in the environment variable "
            "{} or in odbc.ini",
            kPasswordVariable);
    }
    if (state == "42501" || Contains(words, {"permission denied", "command denied"})) {
        return "the user needs the right to read the table (SELECT)";
    }
    if (Contains(words, {"lock", "busy"})) {
        return "another program holds the table; try again when it is done";
    }
    if (state == "42P01" || state == "42S02" || state == "42S22" || state == "42703" ||
        Contains(words, {"no such table", "no such column", "doesn't exist", "does not exist"})) {
        return "are the names spelled as the engine has them? capital and small letters count";
    }
    if (state.compare(0, 2, "08") == 0 || state.compare(0, 3, "57P") == 0 ||
        Contains(words, {"connect", "lost", "gone away", "closed", "terminating"})) {
        return "is the server running, and all its nodes? nothing was written; try again when it "
               "is";
    }
    return {};
}

// What an engine calls its boolean type, which some drivers describe as a text or a number.
bool IsBooleanName(const std::string& type) { return type == "bool" || type == "boolean"; }

Storage StorageOf(SQLSMALLINT type, const std::string& name, Dialect::Engine engine) {
    if (engine == Dialect::Engine::Sqlite) return Storage::Any;
    if (IsBooleanName(name)) return Storage::Boolean;
    switch (type) {
        case SQL_DOUBLE:
        case SQL_FLOAT:
            return Storage::Double;
        case SQL_REAL:
        case SQL_DECIMAL:
        case SQL_NUMERIC:
        case SQL_TINYINT:
        case SQL_SMALLINT:
        case SQL_INTEGER:
        case SQL_BIGINT:
            return Storage::Number;
        case SQL_BIT:
            return engine == Dialect::Engine::MySql ? Storage::Other : Storage::Boolean;
        case SQL_CHAR:
        case SQL_VARCHAR:
        case SQL_LONGVARCHAR:
        case SQL_WCHAR:
        case SQL_WVARCHAR:
        case SQL_WLONGVARCHAR:
        case SQL_GUID:
            return Storage::Text;
        case SQL_DATE:
        case SQL_TIME:
        case SQL_TIMESTAMP:
        case SQL_TYPE_DATE:
        case SQL_TYPE_TIME:
        case SQL_TYPE_TIMESTAMP:
            return Storage::Date;
        default:
            return type >= SQL_INTERVAL_YEAR && type <= SQL_INTERVAL_MINUTE_TO_SECOND
                       ? Storage::Date
                       : Storage::Other;
    }
}

}  // namespace

// What a query that got stuck may still use when its connection is given up.
struct Connection::State {
    State(const SqlOptions& given, std::function<void()> beat, MCQueryCancel& query)
        : wait(std::move(beat)), cancel(query), timeout(given.timeout) {
        const char* const variable = std::getenv(kPasswordVariable);
        if (variable) password = variable;
        text = ConnectionText(given.connection, password, given.timeout);
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    ~State() {
        if (dbc) {
            SQLEndTran(SQL_HANDLE_DBC, dbc, SQL_ROLLBACK);
            SQLDisconnect(dbc);
            SQLFreeHandle(SQL_HANDLE_DBC, dbc);
        }
        if (env) SQLFreeHandle(SQL_HANDLE_ENV, env);
    }

    static void Await(const std::shared_ptr<State>& state, double seconds,
                      std::function<void()> work, const std::function<void()>& stop);
    [[noreturn]] void Fail(SQLSMALLINT type, SQLHANDLE handle, const std::string& what) const;
    std::string Info(SQLUSMALLINT what) const;

    std::function<void()> wait;
    MCQueryCancel& cancel;
    double timeout;
    std::string text;
    std::string password;
    SQLHENV env = nullptr;
    SQLHDBC dbc = nullptr;
    Dialect dialect{Dialect::Engine::Ansi, Dialect::Numbers::Bound};
    std::string product;
    bool isConnected = false;
    bool readsNumbersAsText = false;
    // Held while a row is handed over; nothing is once the query was given up.
    std::mutex handing;
    bool isGivenUp = false;
};

void Connection::State::Fail(SQLSMALLINT type, SQLHANDLE handle, const std::string& what) const {
    Failure failure = FailureOf(type, handle, password);
    constexpr std::size_t kMaxWords = 400;
    if (failure.words.size() > kMaxWords)
        failure.words = failure.words.substr(0, kMaxWords) + "...";
    const std::string remedy = Remedy(failure);
    throw SqlError(fmt::format("{}: {}{}{}", what, Printable(failure.words),
                               remedy.empty() ? "" : "; ", remedy),
                   failure.state);
}

std::string Connection::State::Info(SQLUSMALLINT what) const {
    std::array<SQLCHAR, 256> buffer{};
    SQLSMALLINT length = 0;
    SQLGetInfo(dbc, what, buffer.data(), static_cast<SQLSMALLINT>(buffer.size()), &length);
    return reinterpret_cast<const char*>(buffer.data());
}

namespace {

// A statement of a connection.
class OdbcStatement {
public:
    explicit OdbcStatement(SQLHDBC connection) {
        SQLAllocHandle(SQL_HANDLE_STMT, connection, &mHandle);
    }
    OdbcStatement(const OdbcStatement&) = delete;
    OdbcStatement& operator=(const OdbcStatement&) = delete;
    ~OdbcStatement() { SQLFreeHandle(SQL_HANDLE_STMT, mHandle); }

    SQLHSTMT Handle() const { return mHandle; }

private:
    SQLHSTMT mHandle = nullptr;
};

}  // namespace

// Does the work in a thread of its own and waits for it, so that an interrupt and the time-out are
// heeded whatever the driver does. `stop` asks the engine to end it. If it does not end, it is left
// behind with what it owns.
void Connection::State::Await(const std::shared_ptr<State>& state, double seconds,
                              std::function<void()> work, const std::function<void()>& stop) {
    std::packaged_task<void()> task(std::move(work));
    std::future<void> done = task.get_future();
    Worker worker(std::move(task));
    const auto begin = Clock::now();
    std::optional<Clock::time_point> told;
    std::optional<Worker> stopper;
    bool isCancelled = false;
    while (done.wait_for(kBeat) != std::future_status::ready) {
        state->wait();
        const auto now = Clock::now();
        if (!told) {
            isCancelled = state->cancel.QueryCancel();
            const bool isLate =
                seconds > 0.0 && std::chrono::duration<double>(now - begin).count() > seconds;
            if (!isCancelled && !isLate) continue;
            told = now;
            // Some drivers wait for the query when they are told to end it.
            stopper.emplace(std::packaged_task<void()>(stop));
        } else if (now - *told > kPatience) {
            const std::lock_guard<std::mutex> lock(state->handing);
            state->isGivenUp = true;
            isStuck = true;
            break;
        }
    }
    state->wait();
    if (isStuck) {
        worker.Leave();
        stopper->Leave();
    }
    if (isCancelled) throw Cancelled();
    if (told && !state->isConnected) {
        throw SqlError(fmt::format("--sql: there is no connection after {:g} s; is the server "
                                   "running, and can it be reached from here?",
                                   seconds),
                       "HYT00");
    }
    if (told) {
        throw SqlError(fmt::format("{}: the query took longer than {:g} s; --timeout SECONDS gives "
                                   "it more, and 0 all that it takes; is the table locked, or a "
                                   "node not there?",
                                   state->product, seconds),
                       "HYT00");
    }
    done.get();
}

bool Connection::IsThere() { return true; }

bool Connection::IsStuck() { return isStuck; }

// ODBC takes numbers as pointers.
// NOLINTBEGIN(performance-no-int-to-ptr)
Connection::Connection(const SqlOptions& options, std::function<void()> wait, MCQueryCancel& cancel)
    : mState(std::make_shared<State>(options, std::move(wait), cancel)) {
    State& state = *mState;
    SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &state.env);
    SQLSetEnvAttr(state.env, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
    SQLAllocHandle(SQL_HANDLE_DBC, state.env, &state.dbc);
    SQLSetConnectAttr(state.dbc, SQL_ATTR_LOGIN_TIMEOUT,
                      reinterpret_cast<SQLPOINTER>(kLoginSeconds), 0);
    const auto connect = [shared = mState] {
        const SQLRETURN result = SQLDriverConnect(shared->dbc, nullptr, Text(shared->text), SQL_NTS,
                                                  nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT);
        if (!SQL_SUCCEEDED(result)) shared->Fail(SQL_HANDLE_DBC, shared->dbc, "--sql");
    };
    State::Await(mState, static_cast<double>(kLoginSeconds), connect, [] {});
    state.isConnected = true;
    const std::string quote = state.Info(SQL_IDENTIFIER_QUOTE_CHAR);
    state.dialect =
        Dialect::ForConnection(state.Info(SQL_DBMS_NAME), quote.empty() ? ' ' : quote.front());
    state.product = state.Info(SQL_DBMS_NAME) + " " + state.Info(SQL_DBMS_VER);
    // One driver cuts numbers at 15 digits, and the other hands over the server's own.
    state.readsNumbersAsText = state.dialect.GetEngine() == Dialect::Engine::Sqlite ||
                               state.dialect.GetEngine() == Dialect::Engine::PostgreSql;
    SQLSetConnectAttr(state.dbc, SQL_ATTR_ACCESS_MODE,
                      reinterpret_cast<SQLPOINTER>(SQL_MODE_READ_ONLY), 0);
    SQLSetConnectAttr(state.dbc, SQL_ATTR_TXN_ISOLATION,
                      reinterpret_cast<SQLPOINTER>(SQL_TXN_REPEATABLE_READ), 0);
    SQLSetConnectAttr(state.dbc, SQL_ATTR_AUTOCOMMIT,
                      reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_OFF), 0);
}
// NOLINTEND(performance-no-int-to-ptr)

Connection::~Connection() = default;

const Dialect& Connection::GetDialect() const { return mState->dialect; }

const std::string& Connection::Product() const { return mState->product; }

std::vector<ResultColumn> Connection::Describe(const std::string& sql) {
    std::vector<ResultColumn> columns;
    const auto statement = std::make_shared<OdbcStatement>(mState->dbc);
    const auto describe = [shared = mState, statement, sql, &columns] {
        const SQLHSTMT handle = statement->Handle();
        if (!SQL_SUCCEEDED(SQLExecDirect(handle, Text(sql), SQL_NTS))) {
            shared->Fail(SQL_HANDLE_STMT, handle, shared->product);
        }
        SQLSMALLINT count = 0;
        SQLNumResultCols(handle, &count);
        std::vector<ResultColumn> found;
        for (SQLUSMALLINT i = 1; i <= static_cast<SQLUSMALLINT>(count); ++i) {
            std::array<SQLCHAR, 8192> name{};
            std::array<char, 256> typeName{};
            SQLSMALLINT length = 0;
            SQLSMALLINT type = 0;
            SQLSMALLINT digits = 0;
            SQLSMALLINT nullable = 0;
            SQLULEN size = 0;
            if (!SQL_SUCCEEDED(SQLDescribeCol(handle, i, name.data(),
                                              static_cast<SQLSMALLINT>(name.size()), &length, &type,
                                              &size, &digits, &nullable))) {
                shared->Fail(SQL_HANDLE_STMT, handle, shared->product);
            }
            SQLColAttribute(handle, i, SQL_DESC_TYPE_NAME, typeName.data(),
                            static_cast<SQLSMALLINT>(typeName.size()), &length, nullptr);
            const std::string called = Lower(typeName.data());
            // This is the name that one driver does not cut.
            if (shared->dialect.GetEngine() == Dialect::Engine::Sqlite) {
                SQLColAttribute(handle, i, SQL_DESC_LABEL, name.data(),
                                static_cast<SQLSMALLINT>(name.size()), &length, nullptr);
            }
            found.push_back({reinterpret_cast<const char*>(name.data()),
                             StorageOf(type, called, shared->dialect.GetEngine()), called});
        }
        const std::lock_guard<std::mutex> lock(shared->handing);
        if (!shared->isGivenUp) columns = std::move(found);
    };
    State::Await(mState, mState->timeout, describe,
                 [statement] { SQLCancel(statement->Handle()); });
    return columns;
}

namespace {

// Nothing if the driver refuses.
std::optional<SqlValue> ValueOf(SQLHSTMT handle, SQLUSMALLINT column, ReadAs readAs,
                                bool numbersAsText) {
    SqlValue value;
    SQLLEN indicator = 0;
    if (readAs == ReadAs::Number && !numbersAsText) {
        const SQLRETURN result = SQLGetData(handle, column, SQL_C_DOUBLE, &value.number,
                                            sizeof value.number, &indicator);
        if (!SQL_SUCCEEDED(result)) return std::nullopt;
        value.isNull = indicator == SQL_NULL_DATA;
        return value;
    }
    for (;;) {
        std::array<char, 4096> piece{};
        const SQLRETURN result =
            SQLGetData(handle, column, SQL_C_CHAR, piece.data(), piece.size(), &indicator);
        if (result == SQL_NO_DATA) break;
        if (!SQL_SUCCEEDED(result)) return std::nullopt;
        if (indicator == SQL_NULL_DATA) {
            value.isNull = true;
            break;
        }
        value.text += piece.data();
        if (result == SQL_SUCCESS) break;
    }
    if (readAs == ReadAs::Number && !value.isNull) {
        const std::optional<double> number = NumberOf(value.text);
        if (!number) return std::nullopt;
        value.number = *number;
    }
    return value;
}

}  // namespace

void Connection::Run(const Expression& sql, const std::vector<ReadAs>& columns,
                     const std::function<void(const std::vector<SqlValue>&)>& take) {
    const auto statement = std::make_shared<OdbcStatement>(mState->dbc);
    // The numbers must stay where they are until the query has ended.
    const auto run = [shared = mState, statement, query = std::make_shared<Expression>(sql),
                      columns, take] {
        const SQLHSTMT handle = statement->Handle();
        const auto require = [&](SQLRETURN result) {
            if (!SQL_SUCCEEDED(result)) {
                shared->Fail(SQL_HANDLE_STMT, handle, shared->product);
            }
        };
        for (std::size_t i = 0; i < query->numbers.size(); ++i) {
            require(SQLBindParameter(handle, static_cast<SQLUSMALLINT>(i + 1), SQL_PARAM_INPUT,
                                     SQL_C_DOUBLE, SQL_DOUBLE, 0, 0, &query->numbers[i],
                                     sizeof(double), nullptr));
        }
        const SQLRETURN executed = SQLExecDirect(handle, Text(query->sql), SQL_NTS);
        if (executed == SQL_NO_DATA) return;
        require(executed);
        std::vector<SqlValue> row(columns.size());
        while (!columns.empty()) {
            const SQLRETURN fetched = SQLFetch(handle);
            if (fetched == SQL_NO_DATA) return;
            require(fetched);
            for (std::size_t i = 0; i < columns.size(); ++i) {
                auto value = ValueOf(handle, static_cast<SQLUSMALLINT>(i + 1), columns[i],
                                     shared->readsNumbersAsText);
                if (!value) shared->Fail(SQL_HANDLE_STMT, handle, shared->product);
                row[i] = std::move(*value);
            }
            const std::lock_guard<std::mutex> lock(shared->handing);
            if (shared->isGivenUp) return;
            take(row);
        }
    };
    State::Await(mState, mState->timeout, run, [statement] { SQLCancel(statement->Handle()); });
}

void Connection::Execute(const std::string& sql) {
    Run({sql}, {}, [](const std::vector<SqlValue>& /*row*/) {});
}

}  // namespace app
