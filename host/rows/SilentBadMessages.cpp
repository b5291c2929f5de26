#include "host/rows/SilentBadMessages.h"

#include "host/process/Console.h"

namespace host {

void SilentBadMessages::add(std::int64_t count, Clock::time_point now) {
    untold_ += count;
    if (now - told_ >= std::chrono::seconds(1)) tell(now);
}

void SilentBadMessages::tell(Clock::time_point now) {
    if (untold_ == 0) return;
    say(std::to_string(untold_) + (untold_ == 1 ? " message was" : " messages were") +
        " counted as bad without a reason from the adapter: for another stream than \"" + stream_ +
        "\", or refused by the connector, which then says so above.");
    untold_ = 0;
    told_ = now;
}

}  // namespace host
