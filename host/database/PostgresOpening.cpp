#include "host/database/PostgresOpening.h"

#include <libpq-fe.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <vector>

#include "host/database/PostgresErrors.h"
#include "host/database/Unavailable.h"
#include "host/process/Clock.h"
#include "host/process/Failure.h"
#include "host/values/Text.h"

namespace host {

namespace {

constexpr std::chrono::milliseconds kLookAtStop(100);
constexpr std::chrono::milliseconds kGrace(3000);
constexpr std::chrono::seconds kLongestConnecting(10), kShortestConnecting(2);
constexpr char kHost[] = "host", kAddress[] = "hostaddr", kPort[] = "port";

// One setting, and what it is set to.
using Options = std::vector<std::pair<const char*, std::string>>;

struct FreeOptions {
    void operator()(PQconninfoOption* options) const { PQconninfoFree(options); }
};
using OptionList = std::unique_ptr<PQconninfoOption, FreeOptions>;

std::string valueOf(const OptionList& options, std::string_view name) {
    for (const PQconninfoOption* one = options.get(); one != nullptr && one->keyword != nullptr; ++one) {
        if (one->keyword == name && one->val != nullptr) return one->val;
    }
    return "";
}

std::vector<std::string> partsOf(const std::string& list) {
    std::vector<std::string> parts;
    for (size_t begin = 0, end = 0; end != std::string::npos; begin = end + 1) {
        end = list.find(',', begin);
        parts.push_back(list.substr(begin, end == std::string::npos ? end : end - begin));
    }
    return parts;
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

std::string without(const std::string& secret, std::string text) {
    for (size_t at = 0; !secret.empty() && (at = text.find(secret, at)) != std::string::npos; at += 3)
        text.replace(at, secret.size(), "***");
    return text;
}

// The library ends the password at the first @, and takes the rest of it for the host, which it then tells.
void checkAtSigns(const std::string& url) {
    constexpr std::string_view kSlashes = "://";
    const size_t begin = url.find(kSlashes) + kSlashes.size();
    const size_t login = std::min(url.find_first_of("@/", begin), url.size());
    const size_t rest = url[login] == '@' ? login + 1 : begin;
    if (url.find('@', rest) < std::min(url.find('?', rest), url.size()))
        throw Failure(
            "sink.url has an @ in its user, password or database; there it is written %40, as / is %2F.",
            kBadConfiguration);
}

void checkPorts(const std::string& ports) {
    constexpr int kHighest = 65535;
    for (const std::string& port : partsOf(ports)) {
        int number = 0;
        const auto [end, error] = std::from_chars(port.data(), port.data() + port.size(), number);
        const bool isWhole = error == std::errc() && end == port.data() + port.size();
        if (!port.empty() && (!isWhole || number < 1 || number > kHighest))
            throw Failure("A port of sink.url is none; allowed is a number from 1 to 65535.",
                          kBadConfiguration);
    }
}

// As the library counts it.
std::chrono::seconds limitOf(const std::string& timeout) {
    int seconds = 0;
    std::from_chars(timeout.data(), timeout.data() + timeout.size(), seconds);
    return seconds > 0 ? std::max(std::chrono::seconds(seconds), kShortestConnecting) : kLongestConnecting;
}

[[noreturn]] void failInVain(const std::string& text) {
    throw Failure("A connection by sink.url cannot even be tried: " + text + '.', kBadConfiguration);
}

class Opening {
public:
    Opening(const std::string& url, const StopRequest& stop) : url_(url), stop_(stop) {}

    PostgresHandle open() {
        checkAtSigns(url_);
        PostgresHandle first = begin({});
        const OptionList options(PQconninfo(first.get()));
        checkPorts(valueOf(options, kPort));
        limit_ = limitOf(valueOf(options, "connect_timeout"));
        const std::vector<Options> servers = serversOf(options);
        if (servers.size() == 1) return finish(std::move(first));
        first.reset();
        std::string reasons;
        for (const Options& server : servers) {
            try {
                return finish(begin(server));
            } catch (const Unavailable& reason) {
                addToList(reasons, server.front().second + ": " + reason.what());
            }
            if (stop_.isStopped()) break;
        }
        throw Unavailable(reasons);
    }

private:
    // The settings that choose each: without a word, a server that says nothing would keep the library from
    // the next. One of none: there is one server, or the library knows best.
    static std::vector<Options> serversOf(const OptionList& options) {
        Options lists;
        for (const char* name : {kHost, kAddress}) {
            if (const std::string list = valueOf(options, name); !list.empty())
                lists.emplace_back(name, list);
        }
        const std::vector<std::string> ports = partsOf(valueOf(options, kPort));
        std::vector<Options> servers(lists.empty() ? 1 : partsOf(lists.front().second).size());
        for (const auto& [name, list] : lists) {
            const std::vector<std::string> parts = partsOf(list);
            if (parts.size() != servers.size() || std::count(parts.begin(), parts.end(), "") > 0)
                return std::vector<Options>(1);
            for (size_t i = 0; i < parts.size(); ++i) servers[i].emplace_back(name, parts[i]);
        }
        for (size_t i = 0; ports.size() == servers.size() && i < servers.size(); ++i)
            servers[i].emplace_back(kPort, ports[i].empty() ? "5432" : ports[i]);
        return servers;
    }

    // What the URL has goes before what stands ahead of it here, and `more` before that. A server that is
    // gone without a word is noticed by the system's questions and by what it does not acknowledge.
    PostgresHandle begin(const Options& more) const {
        Options all = {{"fallback_application_name", "kel-adapter-host " + std::to_string(::getpid())},
                       {"keepalives_idle", "10"},
                       {"keepalives_interval", "5"},
                       {"keepalives_count", "3"},
                       {"tcp_user_timeout", "20000"},
                       {"dbname", url_},
                       {"client_encoding", "UTF8"}};
        all.insert(all.end(), more.begin(), more.end());
        std::vector<const char*> keys, values;
        for (const auto& [key, value] : all) {
            keys.push_back(key);
            values.push_back(value.c_str());
        }
        keys.push_back(nullptr);
        values.push_back(nullptr);
        PostgresHandle connection(PQconnectStartParams(keys.data(), values.data(), 1));
        if (connection && PQstatus(connection.get()) != CONNECTION_BAD) return connection;
        // The library's word for a URL that it cannot read may hold a part of a password.
        if (!OptionList(PQconninfoParse(url_.c_str(), nullptr)))
            throw Failure(
                "sink.url is no URL of PostgreSQL; it is postgresql://USER@HOST:PORT/DATABASE, with % and "
                "two hexadecimal digits for what is special in its parts.",
                kBadConfiguration);
        if (!connection) throw Unavailable("the memory does not suffice for a connection");
        // Which of them it was, settings or a server, only this tells in every language.
        keys.insert(keys.end() - 1, "connect_timeout");
        values.insert(values.end() - 1, "2");
        if (PQpingParams(keys.data(), values.data(), 1) == PQPING_NO_ATTEMPT)
            failInVain(plainMessage(messageOf(connection).c_str()));
        return connection;
    }

    PostgresHandle finish(PostgresHandle connection) const {
        PQsetErrorVerbosity(connection.get(), PQERRORS_VERBOSE);  // with the code
        const Clock::time_point begin = Clock::now();
        PostgresPollingStatusType state =
            PQstatus(connection.get()) == CONNECTION_BAD ? PGRES_POLLING_FAILED : PGRES_POLLING_WRITING;
        while (state != PGRES_POLLING_OK) {
            if (state == PGRES_POLLING_FAILED) fail(connection);
            const auto past = Clock::now() - begin;
            if (past > limit_ || (stop_.isStopped() && past > kGrace))
                throw Unavailable("no answer to a connection");
            pollfd socket{PQsocket(connection.get()),
                          static_cast<short>(state == PGRES_POLLING_READING ? POLLIN : POLLOUT), 0};
            if (::poll(&socket, 1, static_cast<int>(kLookAtStop.count())) > 0)
                state = PQconnectPoll(connection.get());
        }
        PQsetErrorVerbosity(connection.get(), PQERRORS_DEFAULT);
        return connection;
    }

    [[noreturn]] static void fail(const PostgresHandle& connection) {
        if (PQconnectionNeedsPassword(connection.get()) == 1)
            throw Failure(
                "The database asks for a password, and there is none; it is looked for in .pgpass, "
                "PGPASSWORD, "
                "a service file and sink.url.");
        const std::string all = messageOf(connection), code = codeIn(all);
        std::string text = plainMessage(all.c_str());
        if (!code.empty()) text = text.substr(std::min(text.size(), code.size() + 2));
        // The library reads these when the server has answered already.
        for (const char* file : {"certificate file", "key file"}) {
            if (code.empty() && text.find(file) != std::string::npos) failInVain(text);
        }
        if (code.empty() || isPassing(code)) throw Unavailable(reasonOf(code, text));
        throw Failure("The database refuses the connection: " + text + '.');
    }

    static std::string messageOf(const PostgresHandle& connection) {
        const OptionList options(PQconninfo(connection.get()));
        return without(valueOf(options, "password"), PQerrorMessage(connection.get()));
    }

    const std::string& url_;
    const StopRequest& stop_;
    std::chrono::seconds limit_ = kLongestConnecting;
};

}  // namespace

void PostgresFinish::operator()(pg_conn* connection) const { PQfinish(connection); }

PostgresHandle openPostgres(const std::string& url, const StopRequest& stop) {
    return Opening(url, stop).open();
}

}  // namespace host
