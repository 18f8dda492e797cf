// What a program that was built without ODBC has in the place of a connection.
#include "app/sql/Connection.h"

namespace app {

struct Connection::State {
    Dialect dialect{Dialect::Engine::Ansi, Dialect::Numbers::Bound};
    std::string product;
};

bool Connection::IsThere() { return false; }

bool Connection::IsStuck() { return false; }

// The interface is that of Connection.cpp.
// NOLINTBEGIN(performance-unnecessary-value-param)
Connection::Connection(const SqlOptions& /*options*/, std::function<void()> /*wait*/,
                       MCQueryCancel& /*cancel*/) {
    throw UsageError(
        "--sql: this program was built without unixODBC; install unixodbc-dev and build it again, "
        "or let the engine's own client answer what 'accredit sql' prints");
}
// NOLINTEND(performance-unnecessary-value-param)

Connection::~Connection() = default;

const Dialect& Connection::GetDialect() const { return mState->dialect; }

const std::string& Connection::Product() const { return mState->product; }

std::vector<ResultColumn> Connection::Describe(const std::string& /*sql*/) { return {}; }

void Connection::Run(const Expression& /*sql*/, const std::vector<ReadAs>& /*columns*/,
                     const std::function<void(const std::vector<SqlValue>&)>& /*take*/) {}

void Connection::Execute(const std::string& /*sql*/) {}

}  // namespace app
