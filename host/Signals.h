// SIGINT and SIGTERM as a request: the first runs an action on a thread of its own, a second leaves the
// process at once.
#pragma once

#include <atomic>
#include <functional>
#include <thread>

namespace host {

// Blocks both signals in this thread and all that it will start: before any other thread exists.
void blockSignals();

class SignalWatch {
public:
    explicit SignalWatch(std::function<void()> onFirst);
    ~SignalWatch();  // waits for an action that runs
    SignalWatch(const SignalWatch&) = delete;
    SignalWatch& operator=(const SignalWatch&) = delete;

private:
    void watch();

    std::function<void()> onFirst_;
    std::atomic<bool> finished_{false};
    std::thread thread_;
};

}  // namespace host
