#include "host/Signals.h"

#include <chrono>
#include <csignal>
#include <cstdlib>

#include "host/Console.h"

namespace host {

namespace {

// timeout(1) signals the process and then its group, this process again.
constexpr std::chrono::milliseconds kSameRequest(300);

sigset_t handledSignals() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    return set;
}

}  // namespace

void blockSignals() {
    const sigset_t set = handledSignals();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

SignalWatch::SignalWatch(std::function<void()> onFirst)
    : onFirst_(std::move(onFirst)), thread_([this] { watch(); }) {}

SignalWatch::~SignalWatch() {
    finished_ = true;
    pthread_kill(thread_.native_handle(), SIGINT);
    thread_.join();
}

void SignalWatch::watch() {
    const sigset_t set = handledSignals();
    int signal = 0;
    sigwait(&set, &signal);
    if (finished_) return;
    const auto first = std::chrono::steady_clock::now();
    // The action may take its time; a second signal must be heard meanwhile.
    std::thread action(onFirst_);
    while (sigwait(&set, &signal) == 0 && !finished_) {
        if (std::chrono::steady_clock::now() - first > kSameRequest) std::_Exit(kLeftAtOnce);
    }
    action.join();
}

}  // namespace host
