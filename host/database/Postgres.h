// libpq with owners, errors and waits that end.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

#include "host/database/Patience.h"
#include "host/database/PostgresOpening.h"
#include "host/database/PostgresParameters.h"

struct pg_result;

namespace host {

// What PostgreSQL says of a statement that failed.
class PostgresError : public std::runtime_error {
public:
    PostgresError(std::string sqlState, const std::string& text, std::string columnName = {})
        : std::runtime_error(text), code(std::move(sqlState)), column(std::move(columnName)) {}
    const std::string code;    // SQLSTATE; "": there is no connection any more
    const std::string column;  // "": none is to blame
};

class PostgresResult {
public:
    explicit PostgresResult(pg_result* result) : result_(result) {}

    int rows() const;
    bool isNull(int row, int column) const;
    std::string text(int row, int column) const;
    std::int64_t integer(int row, int column) const;
    std::int64_t affected() const;  // rows that the statement wrote
    std::string tag() const;        // of the command that was done
    const pg_result* get() const { return result_.get(); }

private:
    struct Clear {
        void operator()(pg_result* result) const;
    };
    std::unique_ptr<pg_result, Clear> result_;
};

// A connection on which statements are sent ahead of their results: any number of send, then sync, then a
// receive for each, then finish. An error in one makes all up to the sync fail without being tried.
class PostgresConnection {
public:
    // `silence`: how long the server may take to answer before it counts as away. Throws Unavailable, or
    // Failure where a further try would be in vain.
    PostgresConnection(const std::string& url, std::chrono::milliseconds silence, const StopRequest& stop);

    bool isLost() const { return isLost_; }
    int version() const;  // 150000 and the like

    void sendPrepare(const std::string& name, const std::string& statement);
    void send(const std::string& name, PostgresParameters& parameters);  // one that was prepared
    void sendText(const std::string& statement, PostgresParameters& parameters);
    void sendText(const std::string& statement);
    void push();  // what was sent goes out now, as far as there is room
    void sync();
    PostgresResult receive();  // throws PostgresError
    void finish();             // what was not received is left out

    // The four together.
    PostgresResult query(const std::string& statement, PostgresParameters& parameters);
    PostgresResult query(const std::string& statement);

private:
    enum class Wait { kForData, kForRoomToo };

    void check(int isSent);
    void await(Wait wait);
    pg_result* next();
    [[noreturn]] void lose(const std::string& reason);
    bool isOverdue(std::chrono::steady_clock::time_point begin) const;

    const PostgresHandle connection_;
    const std::chrono::milliseconds silence_;
    const StopRequest& stop_;
    bool isLost_ = false;
    bool isSynced_ = true;  // nothing is to be received
};

}  // namespace host
