#include "host/Signals.h"

#include <csignal>
#include <cstdlib>

#include "host/Console.h"

namespace host {

namespace {

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
    pthread_kill(thread_.native_handle(), SIGTERM);
    thread_.join();
}

void SignalWatch::watch() {
    const sigset_t set = handledSignals();
    int signal = 0;
    sigwait(&set, &signal);
    if (finished_) return;
    // The action may take its time; a second signal must be heard meanwhile.
    std::thread action(onFirst_);
    sigwait(&set, &signal);
    if (!finished_) std::_Exit(kLeftAtOnce);
    action.join();
}

}  // namespace host
