#include "host/database/Postgres.h"

#include <libpq-fe.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstdlib>

#include "host/database/PostgresErrors.h"
#include "host/database/Unavailable.h"
#include "host/process/Clock.h"
#include "host/process/Failure.h"
#include "host/values/Text.h"

namespace host {

namespace {

constexpr std::chrono::milliseconds kLookAtStop(100);
constexpr std::chrono::milliseconds kGrace(3000);
constexpr std::chrono::milliseconds kLongestConnecting(10'000);

// The first line, without what the server or the library puts before it.
std::string plainMessage(const char* message) {
    std::string text = message;
    text = text.substr(0, text.find('\n'));
    for (const std::string_view before : {"FATAL:  ", "ERROR:  ", "PANIC:  ", " failed: "}) {
        const size_t at = text.find(before);
        if (at == std::string::npos) continue;
        text.erase(0, at + before.size());
        text.front() = lowerCase(text.front());
        break;
    }
    return text;
}

// In a message at its most verbose the code stands before the text.
std::string codeIn(const std::string& message) {
    constexpr size_t kLength = 5;
    const auto isOfCode = [](char c) {
        return std::isdigit(static_cast<unsigned char>(c)) != 0 ||
               std::isupper(static_cast<unsigned char>(c)) != 0;
    };
    for (size_t at = message.find(":  "); at != std::string::npos; at = message.find(":  ", at + 1)) {
        std::string code = message.substr(at + 3, kLength);
        if (code.size() == kLength && message.compare(at + 3 + kLength, 2, ": ") == 0 &&
            std::all_of(code.begin(), code.end(), isOfCode))
            return code;
    }
    return "";
}

// What the password of the URL is, in case that a message holds it.
std::string passwordOf(const std::string& url) {
    PQconninfoOption* options = PQconninfoParse(url.c_str(), nullptr);
    std::string password;
    for (const PQconninfoOption* one = options; one != nullptr && one->keyword != nullptr; ++one) {
        if (std::string_view(one->keyword) == "password" && one->val != nullptr) password = one->val;
    }
    PQconninfoFree(options);
    return password;
}

std::string without(const std::string& secret, std::string text) {
    for (size_t at = 0; !secret.empty() && (at = text.find(secret, at)) != std::string::npos; at += 3)
        text.replace(at, secret.size(), "***");
    return text;
}

}  // namespace

void PostgresResult::Clear::operator()(pg_result* result) const { PQclear(result); }
void PostgresConnection::Finish::operator()(pg_conn* connection) const { PQfinish(connection); }

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
    : silence_(silence), stop_(stop) {
    open(url);
    if (PQsetnonblocking(connection_.get(), 1) != 0 || PQenterPipelineMode(connection_.get()) != 1)
        lose(plainMessage(PQerrorMessage(connection_.get())));
}

void PostgresConnection::open(const std::string& url) {
    // What the URL has goes before what stands ahead of it here. A server that is gone without a word is
    // noticed by the system's questions and by what it does not acknowledge.
    const std::string name = "kel-adapter-host " + std::to_string(::getpid());
    const char* const keys[] = {
        "fallback_application_name", "keepalives_idle", "keepalives_interval", "keepalives_count",
        "tcp_user_timeout",          "dbname",          "client_encoding",     nullptr};
    const char* const values[] = {name.c_str(), "10", "5", "3", "20000", url.c_str(), "UTF8", nullptr};
    connection_.reset(PQconnectStartParams(keys, values, 1));
    const auto message = [&] { return std::string(PQerrorMessage(connection_.get())); };
    if (!connection_ || PQstatus(connection_.get()) == CONNECTION_BAD) {
        // The library's word for a URL that it cannot read may hold a part of a password.
        if (PQconninfoOption* options = PQconninfoParse(url.c_str(), nullptr); options == nullptr)
            throw Failure(
                "sink.url is no URL of PostgreSQL; it is postgresql://USER@HOST:PORT/DATABASE, with % and "
                "two hexadecimal digits for what is special in its parts.",
                kBadConfiguration);
        else
            PQconninfoFree(options);
    }
    PQsetErrorVerbosity(connection_.get(), PQERRORS_VERBOSE);  // with the code
    const Clock::time_point begin = Clock::now();
    PostgresPollingStatusType state =
        PQstatus(connection_.get()) == CONNECTION_BAD ? PGRES_POLLING_FAILED : PGRES_POLLING_WRITING;
    while (state != PGRES_POLLING_OK) {
        if (state == PGRES_POLLING_FAILED) {
            const std::string all = without(passwordOf(url), message()), code = codeIn(all);
            std::string text = plainMessage(all.c_str());
            if (!code.empty()) text = text.substr(std::min(text.size(), code.size() + 2));
            if (code.empty() || isPassing(code)) throw Unavailable(reasonOf(code, text));
            throw Failure("The database refuses the connection: " + text + '.');
        }
        const auto past = Clock::now() - begin;
        if (past > kLongestConnecting || (stop_.isStopped() && past > kGrace))
            throw Unavailable("no answer to a connection");
        pollfd socket{PQsocket(connection_.get()),
                      static_cast<short>(state == PGRES_POLLING_READING ? POLLIN : POLLOUT), 0};
        if (::poll(&socket, 1, static_cast<int>(kLookAtStop.count())) > 0)
            state = PQconnectPoll(connection_.get());
    }
    PQsetErrorVerbosity(connection_.get(), PQERRORS_DEFAULT);
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
    const std::string code = field(PG_DIAG_SQLSTATE);
    if (result.get() == nullptr || PQstatus(connection_.get()) == CONNECTION_BAD || code.empty()) {
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
