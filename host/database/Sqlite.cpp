#include "host/database/Sqlite.h"

#include <sqlite3.h>

#include <chrono>
#include <thread>
#include <utility>

namespace host {

namespace {

constexpr int kBusyStepMillis = 20;

[[noreturn]] void failed(sqlite3* connection, int code) {
    const int extended = connection != nullptr ? sqlite3_extended_errcode(connection) : code;
    throw SqliteError(extended, connection != nullptr ? sqlite3_errmsg(connection) : sqlite3_errstr(code));
}

}  // namespace

void SqliteStatement::Finalize::operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
void SqliteConnection::Close::operator()(sqlite3* connection) const { sqlite3_close_v2(connection); }

SqliteStatement::SqliteStatement(sqlite3* connection, const std::string& text) : connection_(connection) {
    sqlite3_stmt* statement = nullptr;
    const int code = sqlite3_prepare_v3(connection, text.data(), static_cast<int>(text.size()),
                                        SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    statement_.reset(statement);
    check(code);
}

void SqliteStatement::check(int code) const {
    if (code != SQLITE_OK) failed(connection_, code);
}

SqliteStatement& SqliteStatement::bindNull(int parameter) {
    check(sqlite3_bind_null(statement_.get(), parameter));
    return *this;
}

SqliteStatement& SqliteStatement::bind(int parameter, std::int64_t value) {
    check(sqlite3_bind_int64(statement_.get(), parameter, value));
    return *this;
}

SqliteStatement& SqliteStatement::bind(int parameter, double value) {
    check(sqlite3_bind_double(statement_.get(), parameter, value));
    return *this;
}

SqliteStatement& SqliteStatement::bind(int parameter, std::string_view text) {
    check(sqlite3_bind_text64(statement_.get(), parameter, text.data(), text.size(), SQLITE_STATIC,
                              SQLITE_UTF8));
    return *this;
}

SqliteStatement& SqliteStatement::bindBytes(int parameter, std::string_view bytes) {
    // A null pointer would be a null value.
    const char* begin = bytes.empty() ? "" : bytes.data();
    check(sqlite3_bind_blob64(statement_.get(), parameter, begin, bytes.size(), SQLITE_STATIC));
    return *this;
}

bool SqliteStatement::step() {
    const int code = sqlite3_step(statement_.get());
    if (code == SQLITE_ROW) return true;
    if (code != SQLITE_DONE) fail(code);
    sqlite3_reset(statement_.get());
    return false;
}

void SqliteStatement::run() {
    while (step()) {
    }
}

// The error's text is the connection's, which a reset keeps; a statement that failed must not stay open, as
// the transaction's end would wait for it.
void SqliteStatement::fail(int code) {
    const int extended = sqlite3_extended_errcode(connection_);
    const std::string text = sqlite3_errmsg(connection_);
    sqlite3_reset(statement_.get());
    throw SqliteError(extended != SQLITE_OK ? extended : code, text);
}

std::int64_t SqliteStatement::integer(int column) const {
    return sqlite3_column_int64(statement_.get(), column);
}

std::string SqliteStatement::text(int column) const {
    const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement_.get(), column));
    const int size = sqlite3_column_bytes(statement_.get(), column);
    return bytes != nullptr ? std::string(bytes, static_cast<size_t>(size)) : std::string();
}

bool SqliteStatement::isNull(int column) const {
    return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
}

SqliteConnection::SqliteConnection(const std::string& file, int flags, std::function<bool(int)> waitsOn)
    : waitsOn_(std::move(waitsOn)) {
    sqlite3* connection = nullptr;
    const int code = sqlite3_open_v2(file.c_str(), &connection, flags | SQLITE_OPEN_NOMUTEX, nullptr);
    connection_.reset(connection);
    if (code != SQLITE_OK) failed(connection, code);
    sqlite3_extended_result_codes(connection, 1);
    // A name that no column has would else be a text.
    sqlite3_db_config(connection, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
    sqlite3_busy_handler(connection, onBusy, this);
}

int SqliteConnection::onBusy(void* self, int calls) {
    if (!static_cast<SqliteConnection*>(self)->waitsOn_(calls * kBusyStepMillis)) return 0;
    std::this_thread::sleep_for(std::chrono::milliseconds(kBusyStepMillis));
    return 1;
}

void SqliteConnection::execute(const std::string& statements) {
    const int code = sqlite3_exec(connection_.get(), statements.c_str(), nullptr, nullptr, nullptr);
    if (code != SQLITE_OK) failed(connection_.get(), code);
}

std::int64_t SqliteConnection::changes() const { return sqlite3_changes64(connection_.get()); }
std::int64_t SqliteConnection::lastRowId() const { return sqlite3_last_insert_rowid(connection_.get()); }
bool SqliteConnection::isInTransaction() const { return sqlite3_get_autocommit(connection_.get()) == 0; }

bool SqliteConnection::hasBrokenReferences() const {
    int current = 0, highest = 0;
    sqlite3_db_status(connection_.get(), SQLITE_DBSTATUS_DEFERRED_FKS, &current, &highest, 0);
    return current > 0;
}

}  // namespace host
