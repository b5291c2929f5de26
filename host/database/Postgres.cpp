#include "host/database/Postgres.h"

#include <libpq-fe.h>
#include <poll.h>

#include <cstdlib>
#include <string_view>

#include "host/database/PostgresErrors.h"
#include "host/process/Clock.h"

namespace host {

namespace {

constexpr std::chrono::milliseconds kLookAtStop(100);
constexpr std::chrono::milliseconds kGrace(3000);

}  // namespace

void PostgresResult::Clear::operator()(pg_result* result) const { PQclear(result); }

int PostgresResult::rows() const { return PQntuples(result_.get()); }
bool PostgresResult::isNull(int row, int column) const {
    return PQgetisnull(result_.get(), row, column) == 1;
}
std::string PostgresResult::text(int row, int column) const {
    return {PQgetvalue(result_.get(), row, column),
            static_cast<size_t>(PQgetlength(result_.get(), row, column))};
}
std::int64_t PostgresResult::integer(int row, int column) const {
    return std::atoll(PQgetvalue(result_.get(), row, column));
}
std::int64_t PostgresResult::affected() const { return std::atoll(PQcmdTuples(result_.get())); }
std::string PostgresResult::tag() const { return PQcmdStatus(result_.get()); }

PostgresConnection::PostgresConnection(const std::string& url, std::chrono::milliseconds silence,
                                       const StopRequest& stop)
    : connection_(openPostgres(url, stop)), silence_(silence), stop_(stop) {
    if (PQsetnonblocking(connection_.get(), 1) != 0 || PQenterPipelineMode(connection_.get()) != 1)
        lose(plainMessage(PQerrorMessage(connection_.get())));
}

int PostgresConnection::version() const { return PQserverVersion(connection_.get()); }

void PostgresConnection::lose(const std::string& reason) {
    isLost_ = true;
    throw PostgresError("", reason.empty() ? "the connection is lost" : reason);
}

bool PostgresConnection::isOverdue(Clock::time_point begin) const {
    const auto past = Clock::now() - begin;
    return past > silence_ || (stop_.isStopped() && past > kGrace);
}

// Comes back when there is something to read, or to write where that is wanted.
void PostgresConnection::await(Wait wait) {
    const Clock::time_point begin = Clock::now();
    pollfd socket{PQsocket(connection_.get()),
                  static_cast<short>(wait == Wait::kForRoomToo ? POLLIN | POLLOUT : POLLIN), 0};
    while (::poll(&socket, 1, static_cast<int>(kLookAtStop.count())) <= 0) {
        if (isOverdue(begin))
            lose("no answer for " + std::to_string((Clock::now() - begin) / std::chrono::seconds(1)) + " s");
    }
    if ((socket.revents & ~POLLOUT) != 0 && PQconsumeInput(connection_.get()) != 1)
        lose(plainMessage(PQerrorMessage(connection_.get())));
}

void PostgresConnection::check(int isSent) {
    isSynced_ = false;
    if (isSent != 1) lose(plainMessage(PQerrorMessage(connection_.get())));
}

void PostgresConnection::sendPrepare(const std::string& name, const std::string& statement) {
    check(PQsendPrepare(connection_.get(), name.c_str(), statement.c_str(), 0, nullptr));
}

void PostgresConnection::send(const std::string& name, PostgresParameters& parameters) {
    check(PQsendQueryPrepared(connection_.get(), name.c_str(), parameters.count(), parameters.values(),
                              parameters.lengths(), parameters.formats(), 0));
}

void PostgresConnection::sendText(const std::string& statement, PostgresParameters& parameters) {
    check(PQsendQueryParams(connection_.get(), statement.c_str(), parameters.count(), nullptr,
                            parameters.values(), parameters.lengths(), parameters.formats(), 0));
}

void PostgresConnection::sendText(const std::string& statement) {
    PostgresParameters none;
    sendText(statement, none);
}

void PostgresConnection::push() {
    if (PQflush(connection_.get()) < 0) lose(plainMessage(PQerrorMessage(connection_.get())));
}

void PostgresConnection::sync() {
    check(PQpipelineSync(connection_.get()));
    for (int left = 1; (left = PQflush(connection_.get())) != 0; await(Wait::kForRoomToo)) {
        if (left < 0) lose(plainMessage(PQerrorMessage(connection_.get())));
    }
}

pg_result* PostgresConnection::next() {
    while (PQisBusy(connection_.get()) == 1) await(Wait::kForData);
    return PQgetResult(connection_.get());
}

PostgresResult PostgresConnection::receive() {
    PostgresResult result(next());
    const ExecStatusType status = PQresultStatus(result.get());
    if (status == PGRES_COMMAND_OK || status == PGRES_TUPLES_OK) {
        PostgresResult end(next());  // null: each statement's results end so
        return result;
    }
    const auto field = [&](int code) {
        const char* text = PQresultErrorField(result.get(), code);
        return std::string(text != nullptr ? text : "");
    };
    const std::string code = field(PG_DIAG_SQLSTATE), severity = field(PG_DIAG_SEVERITY_NONLOCALIZED);
    const bool isLast = severity == "FATAL" || severity == "PANIC";  // the server says nothing after it
    if (result.get() == nullptr || PQstatus(connection_.get()) == CONNECTION_BAD || code.empty() || isLast) {
        isLost_ = true;
        if (!isPassing(code)) lose(plainMessage(PQerrorMessage(connection_.get())));
    }
    std::string text = field(PG_DIAG_MESSAGE_PRIMARY);
    const std::string detail = field(PG_DIAG_MESSAGE_DETAIL);
    if (!detail.empty()) text += " (" + detail + ')';
    throw PostgresError(code, text, field(PG_DIAG_COLUMN_NAME));
}

void PostgresConnection::finish() {
    while (!isSynced_) {
        const PostgresResult result(next());
        isSynced_ = PQresultStatus(result.get()) == PGRES_PIPELINE_SYNC;
        if (PQstatus(connection_.get()) == CONNECTION_BAD)
            lose(plainMessage(PQerrorMessage(connection_.get())));
    }
}

PostgresResult PostgresConnection::query(const std::string& statement, PostgresParameters& parameters) {
    sendText(statement, parameters);
    sync();
    PostgresResult result = receive();
    finish();
    return result;
}

PostgresResult PostgresConnection::query(const std::string& statement) {
    PostgresParameters none;
    return query(statement, none);
}

}  // namespace host
