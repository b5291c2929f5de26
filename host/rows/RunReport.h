// How far a run is: a line while it goes on, and the totals at its end.
#pragma once

#include <cstdint>
#include <functional>

#include "host/process/Clock.h"

namespace host {

struct Totals {
    std::int64_t total = 0;  // messages dealt with: each is good, bad, repeated or passed over
    std::int64_t good = 0;   // rows that are kept
    std::int64_t bad = 0;
    std::int64_t repeated = 0;  // found to have been kept before
    std::int64_t batches = 0;
    double waited = 0;  // seconds for a database
    Clock::time_point lastMessage{};
};

// `seconds`: from "ready" to the last message.
void sayTotals(const Totals& totals, double seconds);

// What there is to tell besides where rows go into a database.
void sayBatches(const Totals& totals);

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
