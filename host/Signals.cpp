#include "host/Signals.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <mutex>
#include <thread>
#include <utility>

#include "host/Console.h"

namespace host {

namespace {

// timeout(1) signals the process and then its group, this process again.
constexpr std::chrono::milliseconds kSameRequest(300);

void leave() {
    say("Stopped before the command was ready.");
    std::_Exit(kFailed);
}

std::mutex stopLock;  // guards what follows
std::function<void()> stopAction = leave;
std::thread stopping;

sigset_t handledSignals() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    return set;
}

[[noreturn]] void watch() {
    const sigset_t set = handledSignals();
    int signal = 0;
    sigwait(&set, &signal);
    const auto first = std::chrono::steady_clock::now();
    {
        // The action may take its time; a second signal must be heard meanwhile.
        const std::lock_guard guard(stopLock);
        if (stopAction) stopping = std::thread(stopAction);
    }
    while (sigwait(&set, &signal) != 0 || std::chrono::steady_clock::now() - first <= kSameRequest) {
    }
    std::_Exit(kLeftAtOnce);
}

}  // namespace

void watchSignals() {
    const sigset_t set = handledSignals();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    std::thread(watch).detach();
}

StopAction::StopAction(std::function<void()> action) {
    const std::lock_guard guard(stopLock);
    stopAction = std::move(action);
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
