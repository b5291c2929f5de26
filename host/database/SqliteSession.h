// A database file of SQLite.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "host/database/DatabaseSession.h"
#include "host/database/Patience.h"
#include "host/database/Refusals.h"
#include "host/database/SourceFile.h"
#include "host/database/Sqlite.h"

namespace host {

class SqliteSession : public DatabaseSession {
public:
    // Throws Failure for a URL that names no file.
    SqliteSession(const SinkSettings& settings, const RowType& type, Access access);

    DatabaseKind kind() const override { return DatabaseKind::kSqlite; }
    bool connect() override;
    void disconnect() override;

    std::optional<TableShape> shapeOf(const std::string& table) override;
    std::string tableName(const std::string& table) const override;
    void create(const std::vector<std::string>& statements) override;
    void prepare(const TableShape& shape) override;

    std::optional<Holder> lockSource() override { return lock_.lock(); }
    bool signOfLife() override { return lock_.signOfLife(); }

    void begin() override;
    std::optional<LedgerRow> readLedger() override;
    void insertLedger() override;
    bool updateLedger(const LedgerRow& row, std::int64_t epoch) override;
    Marked markReplayed(std::int64_t id, const std::string& messageId) override;
    bool write(const LedgerUpdate* ledger, const std::vector<Change>& changes, Care care,
               std::vector<Refused>& refused) override;
    std::int64_t insertReject(const KeptReject& reject) override;
    std::vector<KeptReject> listRejects(bool all, std::int64_t limit) override;
    std::optional<KeptReject> loadReject(std::int64_t id) override;
    void changeReason(std::int64_t id, const Reject& reject) override;
    bool commit() override;
    void rollback() override;
    void stop() override { stop_.stop(); }

private:
    // The statements of rows, and the values of one, which a statement refers to.
    struct Rows {
        std::optional<SqliteStatement> insert, update, remove, upsert;
        std::vector<ValueForm> forms;
        std::vector<size_t> keys;
        std::vector<std::string> texts;
    };

    bool waitsOn(int millis);
    [[noreturn]] void fail(const SqliteError& error) const;
    template <typename Action>
    auto guarded(Action action);
    template <typename Action>
    void setUp(Action action);
    bool writeLedger(const LedgerUpdate& update);
    std::optional<Reject> writeOne(const Change& change);
    std::optional<Reject> writeAlone(const Change& change, Care care);
    bool writeAll(const std::vector<Change>& changes, Care care, std::vector<Refused>& refused);
    void checkPlace() const;
    SqliteStatement& statementFor(char op);
    void bindValue(SqliteStatement& statement, size_t column, const Value& value);
    void bindRow(SqliteStatement& statement, const Change& change);
    SqliteConnection& connection() { return *connection_; }

    const SinkSettings& settings_;
    const RowType& type_;
    const Access access_;
    const std::string file_;
    const Refusals refusals_;
    StopRequest stop_;
    SourceFile lock_;
    std::optional<SqliteConnection> connection_;
    Rows rows_;
    std::string now_;         // of the transaction
    bool hasFailed_ = false;  // the statement of the row written last ended with an error
    dev_t device_ = 0;        // of the open file
    ino_t inode_ = 0;         // 0: not of a file
};

template <typename Action>
auto SqliteSession::guarded(Action action) {
    try {
        return action();
    } catch (const SqliteError& error) {
        fail(error);
    }
}

}  // namespace host
