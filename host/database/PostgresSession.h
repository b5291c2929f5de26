// A database of PostgreSQL.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/database/DatabaseSession.h"
#include "host/database/Patience.h"
#include "host/database/Postgres.h"
#include "host/database/PostgresRows.h"
#include "host/process/Clock.h"

namespace host {

class PostgresSession : public DatabaseSession {
public:
    PostgresSession(const SinkSettings& settings, const RowType& type, Access access);

    DatabaseKind kind() const override { return DatabaseKind::kPostgres; }
    bool connect() override;
    void disconnect() override;

    std::optional<TableShape> shapeOf(const std::string& table) override;
    std::string tableName(const std::string& table) const override;
    void create(const std::vector<std::string>& statements) override;
    void prepare(const TableShape& shape) override;

    std::optional<Holder> lockSource() override;
    bool signOfLife() override;

    void begin() override { beginIsDue_ = true; }
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
    // Prepared statements besides those of rows.
    static constexpr char kLedgerOfBatch[] = "ledger", kLedgerWithOld[] = "ledger with old";

    enum class Outcome { kDone, kNotOurs, kFailed };
    // The changes of a batch on their way: those that are still to be written, and what was refused.
    struct Attempt {
        const LedgerUpdate* ledger;
        const std::vector<Change>& changes;
        std::vector<size_t> left;
        std::vector<Refused>& refused;
    };

    template <typename Action>
    auto guarded(Action action);
    template <typename Action>
    void setUp(Action action);
    [[noreturn]] void fail(const PostgresError& error);
    PostgresResult query(const std::string& statement, PostgresParameters& parameters);
    PostgresResult query(const std::string& statement);
    size_t sendBegin(const LedgerUpdate* ledger);
    bool receiveBegin(const LedgerUpdate* ledger, size_t sent);
    Outcome writeTogether(const Attempt& attempt);
    Outcome writeRows(Attempt& attempt);
    bool writeWithSavepoints(Attempt& attempt, Care care);
    void writeWithSavepoint(Attempt& attempt, size_t change);
    void beginAnew();

    const SinkSettings& settings_;
    const RowType& type_;
    StopRequest stop_;
    std::optional<PostgresConnection> connection_;
    std::optional<PostgresRows> rows_;
    bool beginIsDue_ = false;
    bool isInTransaction_ = false;
    bool isLocked_ = false;
    Clock::time_point lastUse_;
};

template <typename Action>
auto PostgresSession::guarded(Action action) {
    try {
        lastUse_ = Clock::now();
        return action();
    } catch (const PostgresError& error) {
        fail(error);
    }
}

}  // namespace host
