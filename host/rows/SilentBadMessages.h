// Bad messages for which the adapter gave no reason.
#pragma once

#include <cstdint>
#include <string>

#include "host/process/Clock.h"

namespace host {

// Tells of them at most once a second.
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

}  // namespace host
