// How far a run is: a line while it goes on, and the totals at its end.
#pragma once

#include <cstdint>
#include <functional>

#include "host/process/Clock.h"

namespace host {

struct Totals {
    std::int64_t total = 0;  // messages taken
    std::int64_t good = 0;
    std::int64_t bad = 0;
};

// `seconds`: from "ready" to the last message.
void sayTotals(const Totals& totals, double seconds);

// The live line on a terminal: good and bad rows, rows a second lately, and whether the connection is lost.
class StatusLine {
public:
    // `isConnected` is asked in update.
    StatusLine(Clock::time_point start, std::function<bool()> isConnected);
    ~StatusLine();
    StatusLine(const StatusLine&) = delete;
    StatusLine& operator=(const StatusLine&) = delete;

    void update(const Totals& totals, Clock::time_point now);  // cheap between two redraws

private:
    const bool isShown_;
    const std::function<bool()> isConnected_;
    Clock::time_point drawn_;
    std::int64_t goodThen_ = 0;
};

}  // namespace host
