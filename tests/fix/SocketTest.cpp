#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "tests/fix/FixFixture.h"

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// A port of the loopback: taken by a bound socket, refusing until that listens.
class Port {
public:
    Port() {
        address_.sin_family = AF_INET;
        address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address_;
        EXPECT_EQ(bind(socket_, reinterpret_cast<sockaddr*>(&address_), size), 0);
        EXPECT_EQ(getsockname(socket_, reinterpret_cast<sockaddr*>(&address_), &size), 0);
    }
    ~Port() { close(socket_); }
    Port(const Port&) = delete;
    Port& operator=(const Port&) = delete;

    void listen() { EXPECT_EQ(::listen(socket_, 1), 0); }
    int accept() { return ::accept(socket_, nullptr, nullptr); }
    int number() const { return ntohs(address_.sin_port); }

private:
    int socket_ = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address_{};
};

ptrdiff_t openDescriptors() { return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}); }

class FixSocket : public FixFixture {
protected:
    Port port;
    int socket = 99;
    sockaddr_in address{};

    bool open(int interval, int attempts, const char* host = "127.0.0.1") {
        return fix.openSocketSource(socket, address, host, port.number(), interval, attempts);
    }

    // What opening logs that fails twice, at intervals of a second.
    Texts twoFailures(const std::string& limit) const {
        Texts expected = {"7 NewFixUtils::openSocketSource()"};
        for (const std::string attempt : {"1", "2"})
            expected.insert(expected.end(), {kConnect, refusal, "4 Will try again to connect in 1 seconds",
                                             "6 Connection attempt " + attempt + " out of " + limit});
        return expected;
    }
    const std::string refusal = "4 Cannot connect to FIX host: 127.0.0.1:" + std::to_string(port.number());
    const std::string kConnect = "7 NewFixUtils::connectToSocketSource()", kClose = "7 NewFixUtils::closeSocketConnection()";
};

TEST_F(FixSocket, ConnectsAndCloses) {
    port.listen();
    ASSERT_TRUE(open(0, 5, "localhost"));
    const int accepted = port.accept();
    char read[16];
    EXPECT_EQ(write(accepted, "8=FIX", 5), 5);
    EXPECT_EQ(::read(socket, read, sizeof read), 5);
    EXPECT_EQ(ntohs(address.sin_port), port.number());
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
    EXPECT_EQ(platform.takeLogs(), twoFailures("2"));
    EXPECT_EQ(platform.errors,
              (Texts{"Unknown FIX host: no-such-host.invalid", "Cannot connect to FIX host"}));  // none without an interval
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(FixSocket, AHostThatAppearsAfterTheSecondAttempt) {
    std::jthread host([this] {
        std::this_thread::sleep_for(1500ms);
        port.listen();
    });
    EXPECT_TRUE(open(1, 0));  // no limit
    fix.closeSocketConnection(socket);
    Texts expected = twoFailures("268435455");
    expected.insert(expected.end(), {kConnect, "6 Connected to FIX host: 127.0.0.1", kClose});
    EXPECT_EQ(platform.takeLogs(), expected);
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
    EXPECT_FALSE(fix.reconnectToSocketSource(socket, address, "h", port.number(), 0, 1));
    EXPECT_EQ(platform.takeLogs().back(), "6 Connection attempt 1 out of 1");
    fix.setExitRequested(false);
    EXPECT_FALSE(fix.isExitRequested());
}

}  // namespace
