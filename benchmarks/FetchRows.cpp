// FetchRows CONNECTION TABLE: fetches all rows of a table over ODBC in blocks, numbers as doubles
// and the rest as texts, and prints how many there are. What a summary outside of the engine takes
// before anything is computed. The password is that of the environment variable ACCREDIT_PASSWORD.
#include <sql.h>
#include <sqlext.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kBlock = 1000;
constexpr std::size_t kText = 64;

struct Column {
    bool isNumber = false;
    std::vector<double> numbers = std::vector<double>(kBlock);
    std::vector<char> texts = std::vector<char>(kBlock * kText);
    std::vector<SQLLEN> lengths = std::vector<SQLLEN>(kBlock);
};

void Require(SQLRETURN result, const char* what) {
    if (SQL_SUCCEEDED(result)) return;
    std::fprintf(stderr, "FetchRows: %s failed\n", what);
    std::exit(1);
}

SQLCHAR* Text(std::string& text) { return reinterpret_cast<SQLCHAR*>(text.data()); }

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    std::string connection = argv[1];
    if (const char* const password = std::getenv("ACCREDIT_PASSWORD")) {
        connection += std::string(";PWD=") + password;
    }
    SQLHENV env = nullptr;
    SQLHDBC dbc = nullptr;
    SQLHSTMT statement = nullptr;
    SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &env);
    SQLSetEnvAttr(env, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
    SQLAllocHandle(SQL_HANDLE_DBC, env, &dbc);
    Require(SQLDriverConnect(dbc, nullptr, Text(connection), SQL_NTS, nullptr, 0, nullptr,
                             SQL_DRIVER_NOPROMPT),
            "the connection");
    SQLAllocHandle(SQL_HANDLE_STMT, dbc, &statement);
    SQLULEN fetched = 0;
    SQLSetStmtAttr(statement, SQL_ATTR_ROW_ARRAY_SIZE, reinterpret_cast<SQLPOINTER>(kBlock), 0);
    SQLSetStmtAttr(statement, SQL_ATTR_ROWS_FETCHED_PTR, &fetched, 0);
    std::string query = std::string("SELECT * FROM ") + argv[2];
    Require(SQLExecDirect(statement, Text(query), SQL_NTS), "the query");
    SQLSMALLINT count = 0;
    SQLNumResultCols(statement, &count);
    std::vector<Column> columns(static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < columns.size(); ++i) {
        Column& column = columns[i];
        const auto number = static_cast<SQLUSMALLINT>(i + 1);
        SQLSMALLINT length = 0;
        SQLSMALLINT type = 0;
        SQLSMALLINT digits = 0;
        SQLSMALLINT nullable = 0;
        SQLULEN size = 0;
        SQLDescribeCol(statement, number, nullptr, 0, &length, &type, &size, &digits, &nullable);
        column.isNumber =
            type == SQL_DOUBLE || type == SQL_FLOAT || type == SQL_BIGINT || type == SQL_INTEGER;
        Require(column.isNumber ? SQLBindCol(statement, number, SQL_C_DOUBLE, column.numbers.data(),
                                             sizeof(double), column.lengths.data())
                                : SQLBindCol(statement, number, SQL_C_CHAR, column.texts.data(),
                                             kText, column.lengths.data()),
                "a column");
    }
    unsigned long rows = 0;
    for (;;) {
        const SQLRETURN result = SQLFetch(statement);
        if (result == SQL_NO_DATA) break;
        Require(result, "fetching");
        rows += fetched;
    }
    std::printf("%lu\n", rows);
    SQLFreeHandle(SQL_HANDLE_STMT, statement);
    SQLDisconnect(dbc);
    SQLFreeHandle(SQL_HANDLE_DBC, dbc);
    SQLFreeHandle(SQL_HANDLE_ENV, env);
    return 0;
}
