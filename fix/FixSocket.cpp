// The TCP source.
#include "fix/NewFixUtils.h"

#include <fcntl.h>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>

#include "adapter/Adapter.h"
#include "fix/LogLevels.h"
#include "util/StringUtils.h"
#include "util/ThreadUtils.h"

using MORVEX::Kel::strprintf;

namespace {

constexpr int kUnlimitedAttempts = 0xFFFFFFF;
constexpr uint32_t kWaitStepMilliseconds = 1000;

using Clock = std::chrono::steady_clock;

bool resolve(const std::string& host, in_addr& address) {
    addrinfo hints{};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (getaddrinfo(host.c_str(), nullptr, &hints, &found) != 0) return false;
    address = reinterpret_cast<const sockaddr_in*>(found->ai_addr)->sin_addr;
    freeaddrinfo(found);
    return true;
}

// Waits one step for the end, good or bad, of a connect that is under way: as poll answers, 0 when it did not
// come. Signals do not prolong the step.
int awaitAnswer(int socket) {
    const auto end = Clock::now() + std::chrono::milliseconds(kWaitStepMilliseconds);
    for (auto left = end - Clock::now(); left.count() > 0; left = end - Clock::now()) {
        pollfd waiting{socket, POLLOUT, 0};
        const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(left).count();
        const int answered = ::poll(&waiting, 1, static_cast<int>(milliseconds));
        if (answered >= 0 || errno != EINTR) return answered;
    }
    return 0;
}

// How a connect ended that is no longer under way.
bool isConnected(int socket) {
    int error = 0;
    socklen_t size = sizeof error;
    return ::getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &size) == 0 && error == 0;
}

bool makeBlocking(int socket) {
    const int flags = ::fcntl(socket, F_GETFL);
    return flags >= 0 && ::fcntl(socket, F_SETFL, flags & ~O_NONBLOCK) == 0;
}

}  // namespace

bool NewFixUtils::openSocketSource(int& socket, sockaddr_in& address, const std::string& host, int port,
                                   int retryInterval, int maxAttempts) const {
    address = {};
    address.sin_family = AF_INET;
    if (!resolve(host, address.sin_addr)) return refuse(strprintf("Unknown FIX host: %s", host.c_str()));
    address.sin_port = htons(static_cast<uint16_t>(port));
    if (retryInterval < 1) return connectToSocketSource(socket, address, host, port);
    return reconnectToSocketSource(socket, address, host, port, retryInterval, maxAttempts);
}

bool NewFixUtils::connectToSocketSource(int& socket, sockaddr_in& address, const std::string& host,
                                        int port) const {
    trace("NewFixUtils::connectToSocketSource()");
    socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (socket < 0) return refuse("Cannot open stream socket");
    if (finishConnect(socket, address) && makeBlocking(socket)) return true;
    log(fix::kWarning, strprintf("Cannot connect to FIX host: %s:%d", host.c_str(), port));
    ::close(socket);
    socket = -1;
    return false;
}

// A host that answers at once, either way, is not given up for the exit flag.
bool NewFixUtils::finishConnect(int socket, const sockaddr_in& address) const {
    if (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) return true;
    if (errno != EINPROGRESS && errno != EINTR) return false;
    int answered = 0;
    while ((answered = awaitAnswer(socket)) == 0) {
        if (isExitRequested()) return false;
    }
    return answered > 0 && isConnected(socket);
}

bool NewFixUtils::reconnectToSocketSource(int& socket, sockaddr_in& address, const std::string& host,
                                          int port, int retryInterval, int maxAttempts) const {
    // Server logs are searched for this text, so it names the opening operation also where this one is called
    // by itself.
    trace("NewFixUtils::openSocketSource()");
    const int limit = maxAttempts > 0 ? maxAttempts : kUnlimitedAttempts;
    for (int attempt = 1;; ++attempt) {
        if (connectToSocketSource(socket, address, host, port)) {
            log(fix::kProgress, strprintf("Connected to FIX host: %s", host.c_str()));
            return true;
        }
        log(fix::kWarning, strprintf("Will try again to connect in %d seconds", retryInterval));
        for (int second = 0; second < retryInterval; ++second) {
            if (isExitRequested()) {
                log(fix::kWarning, "Stopping reconnection attempts");
                return false;
            }
            pt::psleep(kWaitStepMilliseconds);
        }
        log(fix::kProgress, strprintf("Connection attempt %d out of %d", attempt, limit));
        if (attempt == limit) return refuse("Cannot connect to FIX host");
    }
}

bool NewFixUtils::closeSocketConnection(int& socket) const {
    trace("NewFixUtils::closeSocketConnection()");
    ::shutdown(socket, SHUT_RD);
    ::close(socket);
    socket = -1;
    return true;
}
