// Connecting, which a stop from another thread ends whenever it comes.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

namespace host {

class StoppableReset {
public:
    // False, without `reset` when that can be told in time, once stopped; else what `reset` says, which does
    // not throw. One thread.
    bool run(const std::function<bool()>& reset) {
        isResetting_ = true;
        const bool isReady = !isStopped_ && reset();
        isResetting_ = false;
        return isReady && !isStopped_;
    }

    // Calls `stop`, again and again while a reset runs: one that has just begun clears the stop, or has
    // nothing yet that could be stopped. Any thread, also while another one is in it.
    void stop(const std::function<void()>& stop) {
        constexpr std::chrono::milliseconds kPause(50);
        isStopped_ = true;
        stop();
        while (isResetting_) {
            std::this_thread::sleep_for(kPause);
            stop();
        }
    }

    bool isStopped() const { return isStopped_; }

private:
    std::atomic<bool> isStopped_{false};
    std::atomic<bool> isResetting_{false};
};

}  // namespace host
