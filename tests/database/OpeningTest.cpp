// Connections to PostgreSQL that come about late, or never.
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>

#include "host/process/Clock.h"
#include "tests/database/Fixture.h"

namespace database {
namespace {

// Takes connections, and answers to the first words of each with what it is given, or never.
class Listener {
public:
    explicit Listener(std::string answer) : answer_(std::move(answer)), listening_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        auto* plain = reinterpret_cast<sockaddr*>(&address);
        EXPECT_EQ(::bind(listening_, plain, length) | ::listen(listening_, 8) | ::getsockname(listening_, plain, &length), 0);
        port = std::to_string(ntohs(address.sin_port));
        thread_ = std::thread([this] { serve(); });
    }
    ~Listener() {
        isStopped_ = true;
        thread_.join();
        for (const int client : clients_) ::close(client);
        ::close(listening_);
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    std::string port;

private:
    void serve() {
        std::array<char, 1000> buffer;
        while (!isStopped_) {
            pollfd next{listening_, POLLIN, 0};
            if (::poll(&next, 1, 20) <= 0) continue;
            clients_.push_back(::accept(listening_, nullptr, nullptr));
            if (answer_.empty() || ::read(clients_.back(), buffer.data(), buffer.size()) <= 0) continue;
            EXPECT_GT(::write(clients_.back(), answer_.data(), answer_.size()), 0);
        }
    }

    const std::string answer_;
    const int listening_;
    std::vector<int> clients_;
    std::atomic<bool> isStopped_{false};
    std::thread thread_;
};

class Openings : public Sinks {};
INSTANTIATE_TEST_SUITE_P(Of, Openings, testing::Values("postgresql"));

TEST_P(Openings, ASilentServerGivesWayToTheNext) {
    const Listener silent("");
    const size_t host = settings.url.find("host=") + 5;
    settings.url.insert(host, "127.0.0.1,");
    settings.url += "&connect_timeout=2&port=" + silent.port + ",5432";
    const auto begin = host::Clock::now();
    const auto sink = open();
    EXPECT_EQ(keep(*sink, {{"1", 'i', {text("A"), number(1), Value()}}}), "1 0 0");
    EXPECT_LT(host::secondsBetween(begin, host::Clock::now()), 8);
    settings.url.replace(settings.url.find(",5432"), 5, "," + silent.port);
    settings.url.replace(settings.url.find(",/"), settings.url.find('&', host) - settings.url.find(",/"), ",127.0.0.1");
    EXPECT_EQ(host::databaseProblems(settings, *type),
              Texts{"The database does not answer (127.0.0.1: no answer to a connection, 127.0.0.1: no answer to a connection)."});
}

// Waiting would be for ever, so each has its sentence, and none a part of the password.
TEST_P(Openings, WhatNoFurtherTryMendsIsAFailure) {
    const std::string inVain = "A connection by sink.url cannot even be tried: ", form = "sink.url is no URL of PostgreSQL; ";
    const std::string at = "sink.url has an @ in its user, password or database; there it is written %40, as / is %2F.";
    const std::string port = "A port of sink.url is none; allowed is a number from 1 to 65535.";
    const struct {
        std::string answer;
        std::string url;  // from the user on; *: the port that answers so
        std::string sentence;
    } rows[] = {
        {"", "u@127.0.0.1:*/d?sslmode=foo", inVain + "invalid sslmode value: \"foo\"."},
        {"S", "u@127.0.0.1:*/d?sslmode=verify-full&sslrootcert=/nowhere", inVain + "root certificate file \"/nowhere\" does not exist."},
        {std::string("R\0\0\0\x08\0\0\0\x03", 9), "u@127.0.0.1:*/d?sslmode=disable&passfile=/nowhere",
         "The database asks for a password, and there is none; it is looked for in .pgpass, PGPASSWORD, a service file and sink.url."},
        {"", "u:pa@ss@h/d", at},
        {"", "u:pa/ss@h/d", at},
        {"", "u:pa/s?s@h/d", form},
        {"", "u:secret@:99999/x", port},
        {"", "u:secret", port},
        {"", "h,h:1x/x", port},
        {"", "u:p@nowhere.invalid/d@d?host=h", at},
        {"", "u:p%40@nowhere.invalid/d?application_name=a@b", "The database does not answer (could not translate host name"},
    };
    for (const auto& [answer, url, sentence] : rows) {
        const Listener listener(answer);
        settings.url = "postgresql://" + url;
        if (const size_t star = url.find('*'); star != std::string::npos) settings.url.replace(star + 13, 1, listener.port);
        const Texts found = host::databaseProblems(settings, *type);
        ASSERT_EQ(found.size(), 1U) << url;
        EXPECT_EQ(found[0].substr(0, sentence.size()), sentence) << url;
    }
}

}  // namespace
}  // namespace database
