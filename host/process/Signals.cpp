#include "host/process/Signals.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <mutex>
#include <thread>
#include <utility>

#include "host/process/Console.h"
#include "host/process/Failure.h"

namespace host {

namespace {

// timeout(1) signals the process and then its group, this process again.
constexpr std::chrono::milliseconds kSameRequest(300);

void leave() {
    say(kStoppedEarly);
    std::_Exit(kFailed);
}

std::mutex stopLock;  // guards what follows
std::function<void()> stopAction = leave;
std::chrono::seconds stopLimit = kLongestStop;
std::thread stopping;

sigset_t handledSignals() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    return set;
}

// Whether a further signal comes by then.
bool hears(const sigset_t& set, std::chrono::steady_clock::time_point end) {
    while (true) {
        const auto left = end - std::chrono::steady_clock::now();
        const auto nanoseconds = std::chrono::duration_cast<std::chrono::nanoseconds>(left).count();
        if (nanoseconds <= 0) return false;
        const timespec time{nanoseconds / 1'000'000'000, nanoseconds % 1'000'000'000};
        if (sigtimedwait(&set, nullptr, &time) > 0) return true;
    }
}

[[noreturn]] void watch() {
    const sigset_t set = handledSignals();
    int signal = 0;
    sigwait(&set, &signal);
    const auto first = std::chrono::steady_clock::now();
    std::chrono::seconds limit = kLongestStop;
    {
        // The action may take its time; a second signal must be heard meanwhile.
        const std::lock_guard guard(stopLock);
        if (stopAction) stopping = std::thread(stopAction);
        limit = stopLimit;
    }
    while (hears(set, first + limit)) {
        if (std::chrono::steady_clock::now() - first > kSameRequest) std::_Exit(kLeftAtOnce);
    }
    say("A call has not returned for " + std::to_string(limit.count()) +
        " s after the stop, so the process ends without it; what it had in hand may come again.");
    std::_Exit(kFailed);
}

}  // namespace

void watchSignals() {
    const sigset_t set = handledSignals();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    std::thread(watch).detach();
}

StopAction::StopAction(std::function<void()> action, std::chrono::seconds limit) {
    const std::lock_guard guard(stopLock);
    stopAction = std::move(action);
    stopLimit = limit;
}

StopAction::~StopAction() {
    std::thread running;
    {
        const std::lock_guard guard(stopLock);
        stopAction = nullptr;
        running = std::move(stopping);
    }
    if (running.joinable()) running.join();
}

}  // namespace host
