// SIGINT and SIGTERM as a request: the first runs what the command gave as its stop action, on a thread of
// its own; a second leaves the process at once.
#pragma once

#include <chrono>
#include <functional>

namespace host {

// Blocks both signals in this thread and all that it will start, and hears them on one of its own: before any
// other thread exists, and before anything can wait. While there was no stop action yet, the first signal
// ends the process with one sentence.
void watchSignals();

inline constexpr char kStoppedEarly[] = "The command was stopped before it was ready.";

// Service managers kill what has not ended ten seconds after their signal.
inline constexpr std::chrono::seconds kLongestStop(9);

// What the first signal does while this lives, one at a time. Behind it nothing is left to stop: a first
// signal then does nothing. A process that goes on for longer than the limit is left with one sentence.
class StopAction {
public:
    explicit StopAction(std::function<void()> action, std::chrono::seconds limit = kLongestStop);
    ~StopAction();  // waits for an action that runs
    StopAction(const StopAction&) = delete;
    StopAction& operator=(const StopAction&) = delete;
};

}  // namespace host
