#include <arpa/inet.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <thread>
#include <utility>

#include "tests/fix/FixFixture.h"

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

ptrdiff_t openDescriptors() { return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}); }

class FixSocket : public FixFixture {
protected:
    int server = ::socket(AF_INET, SOCK_STREAM, 0);  // has a port of the loopback, which refuses until it listens
    int port = 0;
    int socket = 99;
    sockaddr_in address{};

    FixSocket() {
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        EXPECT_EQ(bind(server, reinterpret_cast<sockaddr*>(&address), size), 0);
        EXPECT_EQ(getsockname(server, reinterpret_cast<sockaddr*>(&address), &size), 0);
        port = ntohs(std::exchange(address, {}).sin_port);
        refusal += std::to_string(port);
    }
    ~FixSocket() override { close(server); }

    bool open(int interval, int attempts, const char* host = "127.0.0.1") {
        return fix.openSocketSource(socket, address, host, port, interval, attempts);
    }

    // Makes the server one whose queue of connections is full: it lets further ones wait without an answer.
    std::vector<int> fillQueue() {
        sockaddr_in full{AF_INET, htons(static_cast<uint16_t>(port)), {htonl(INADDR_LOOPBACK)}, {}};
        listen(server, 0);
        std::vector<int> connections;
        for (int answered = 1; answered != 0 && connections.size() < 100;) {
            connections.push_back(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0));
            ::connect(connections.back(), reinterpret_cast<sockaddr*>(&full), sizeof full);
            pollfd waiting{connections.back(), POLLOUT, 0};
            answered = poll(&waiting, 1, 300);
        }
        return connections;
    }

    std::string refusal = "4 Cannot connect to FIX host: 127.0.0.1:";
    const std::string kConnect = "7 NewFixUtils::connectToSocketSource()", kClose = "7 NewFixUtils::closeSocketConnection()";
};

TEST_F(FixSocket, ConnectsAndCloses) {
    listen(server, 1);
    fix.setExitRequested(true);  // for those that wait
    ASSERT_TRUE(open(0, 5, "localhost"));
    const int accepted = accept(server, nullptr, nullptr);
    char read[16];
    EXPECT_EQ(ntohs(address.sin_port), port);
    EXPECT_EQ(fcntl(socket, F_GETFL) & O_NONBLOCK, 0) << "its readers wait for what comes";
    EXPECT_EQ(fcntl(socket, F_GETFD), FD_CLOEXEC);
    EXPECT_TRUE(fix.closeSocketConnection(socket));
    EXPECT_EQ(socket, -1);
    EXPECT_EQ(::read(accepted, read, sizeof read), 0);
    close(accepted);
    EXPECT_EQ(platform.takeLogs(), (Texts{kConnect, kClose}));
}

TEST_F(FixSocket, AHostThatIsUnknownOrRefuses) {
    EXPECT_FALSE(open(1, 0, "no-such-host.invalid"));
    EXPECT_TRUE(platform.takeLogs().empty());
    const auto before = openDescriptors();
    EXPECT_FALSE(open(0, 5));
    EXPECT_EQ(socket, -1);
    EXPECT_EQ(platform.takeLogs(), (Texts{kConnect, refusal}));
    const auto start = Clock::now();
    EXPECT_FALSE(open(1, 2));
    EXPECT_GE(Clock::now() - start, 2s);
    const std::string again = "4 Will try again to connect in 1 seconds";
    EXPECT_EQ(platform.takeLogs(), (Texts{"7 NewFixUtils::openSocketSource()", kConnect, refusal, again, "6 Connection attempt 1 out of 2",
                                          kConnect, refusal, again, "6 Connection attempt 2 out of 2"}));
    // None without an interval.
    EXPECT_EQ(platform.errors, (Texts{"Unknown FIX host: no-such-host.invalid", "Cannot connect to FIX host"}));
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(FixSocket, AHostThatAppearsAfterTheSecondAttempt) {
    std::jthread host([this] {
        std::this_thread::sleep_for(1500ms);
        listen(server, 1);
    });
    EXPECT_TRUE(open(1, 0));  // no limit
    fix.closeSocketConnection(socket);
    Texts logs = platform.takeLogs();
    EXPECT_EQ(logs.size(), 1 + 2 * 4 + 3U);
    logs.erase(logs.begin(), logs.end() - 4);
    EXPECT_EQ(logs, (Texts{"6 Connection attempt 2 out of 268435455", kConnect, "6 Connected to FIX host: 127.0.0.1", kClose}));
}

TEST_F(FixSocket, TheExitFlagEndsTheWait) {
    const auto start = Clock::now();
    EXPECT_FALSE(fix.isExitRequested());
    std::jthread stopper([this] {
        std::this_thread::sleep_for(300ms);
        fix.setExitRequested(true);
    });
    EXPECT_FALSE(open(60, -3));
    EXPECT_EQ(platform.takeLogs().back(), "4 Stopping reconnection attempts");
    stopper.join();
    // It stays set, and is looked at before every step of a wait; without an interval there is none.
    EXPECT_FALSE(open(60, 0));
    EXPECT_LT(Clock::now() - start, 2s);
    EXPECT_FALSE(fix.reconnectToSocketSource(socket, address, "h", port, 0, 1));
    EXPECT_EQ(platform.takeLogs().back(), "6 Connection attempt 1 out of 1");
    fix.setExitRequested(false);
    EXPECT_FALSE(fix.isExitRequested());
}

// The kernel would go on for minutes. Signals do not keep the flag from being looked at.
TEST_F(FixSocket, AHostThatDoesNotAnswer) {
    const std::vector<int> others = fillQueue();
    const auto before = openDescriptors();
    const auto start = Clock::now();
    signal(SIGUSR1, [](int) {});
    const std::string entry = "7 NewFixUtils::openSocketSource()", again = "4 Will try again to connect in 60 seconds";
    const std::pair<int, Texts> kRows[] = {{0, {kConnect, refusal}},
                                           {60, {entry, kConnect, refusal, again, "4 Stopping reconnection attempts"}}};
    for (const auto& [interval, logs] : kRows) {
        fix.setExitRequested(false);
        std::jthread stopper([this, self = pthread_self()](const std::stop_token& isDone) {
            std::this_thread::sleep_for(300ms);
            fix.setExitRequested(true);
            while (!isDone.stop_requested()) {
                pthread_kill(self, SIGUSR1);
                std::this_thread::sleep_for(100ms);
            }
        });
        EXPECT_FALSE(open(interval, 0));
        EXPECT_EQ(platform.takeLogs(), logs);
        EXPECT_EQ(socket, -1);
    }
    EXPECT_LT(Clock::now() - start, 30s);
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_TRUE(platform.errors.empty());

    // One that answers the second packet, about a second after the first.
    fix.setExitRequested(false);
    std::jthread host([this] {
        std::this_thread::sleep_for(500ms);
        listen(server, 100);
    });
    EXPECT_TRUE(open(0, 0));
    EXPECT_EQ(platform.takeLogs(), Texts{kConnect});
    fix.closeSocketConnection(socket);
    for (const int other : others) close(other);
}

}  // namespace
