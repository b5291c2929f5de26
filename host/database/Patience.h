// Waiting for a database that is away, and for another host that writes.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

#include "host/process/Clock.h"

namespace host {

// A request to stop that ends a wait.
class StopRequest {
public:
    void stop();
    bool isStopped() const;
    // Waits, or less where the request comes or has come.
    void wait(std::chrono::milliseconds time) const;

private:
    mutable std::mutex lock_;  // guards isStopped_
    mutable std::condition_variable changed_;
    bool isStopped_ = false;
};

// One outage: from the first wait to the end of its life. Tells it on standard error and on the terminal's
// last line.
class Patience {
public:
    // Is made before the first try. `messages`: how many wait for the database; `retrySeconds` 0: as long as
    // it takes; `meanwhile`: is called every now and then in a wait, and throws nothing.
    Patience(const StopRequest& stop, std::int64_t retrySeconds, size_t messages,
             std::function<void()> meanwhile = {});
    ~Patience();
    Patience(const Patience&) = delete;
    Patience& operator=(const Patience&) = delete;

    // Waits before the next try, each time longer. Throws Failure where the time is over or a stop was asked
    // for.
    void await(const std::string& reason);

    void isBack();  // says so where the outage was told

    double seconds() const { return seconds_; }  // that were waited

private:
    void pass(std::chrono::milliseconds time) const;
    std::string waiting(const std::string& reason, std::chrono::milliseconds next) const;

    const StopRequest& stop_;
    const std::chrono::seconds limit_;
    const size_t messages_;
    const std::function<void()> meanwhile_;
    const bool showsStatus_;
    Clock::time_point begin_ = Clock::now();  // of the tries
    std::chrono::milliseconds next_;
    std::optional<Clock::time_point> start_;  // of the waits
    std::optional<Clock::time_point> told_;
    double seconds_ = 0;
};

}  // namespace host
