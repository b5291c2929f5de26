// What a run tells its user while it goes on and at its end.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace host {

using Clock = std::chrono::steady_clock;

inline double secondsBetween(Clock::time_point start, Clock::time_point end) {
    return std::chrono::duration<double>(end - start).count();
}

struct Totals {
    std::int64_t total = 0;  // messages taken
    std::int64_t good = 0;
    std::int64_t bad = 0;
};

// `seconds`: from "ready" to the last message.
void sayTotals(const Totals& totals, double seconds);

// Tells of bad messages for which the adapter gave no reason, at most once a second.
class SilentBadMessages {
public:
    explicit SilentBadMessages(std::string stream) : stream_(std::move(stream)) {}

    void add(std::int64_t count, Clock::time_point now);  // call it with 0 too, as time goes on
    void tell(Clock::time_point now);                     // what is untold so far

private:
    std::string stream_;
    std::int64_t untold_ = 0;
    Clock::time_point told_;
};

// The live line on a terminal: good and bad rows, rows a second lately, and whether the connection is lost.
class StatusLine {
public:
    explicit StatusLine(Clock::time_point start);
    ~StatusLine();
    StatusLine(const StatusLine&) = delete;
    StatusLine& operator=(const StatusLine&) = delete;

    void update(const Totals& totals, Clock::time_point now);  // cheap between two redraws

private:
    const bool isShown_;
    Clock::time_point drawn_;
    std::int64_t goodThen_ = 0;
};

}  // namespace host
