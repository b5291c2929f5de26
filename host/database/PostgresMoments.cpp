#include "host/database/PostgresMoments.h"

#include <charconv>
#include <chrono>

namespace host {

namespace {

constexpr int kLastYear = 294'276;
constexpr int kFirstYear = 1;
constexpr size_t kMicrosecondDigits = 6;

// The number in front, and what stands between it and the next.
int take(std::string_view& text) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    text.remove_prefix(static_cast<size_t>(end - text.data()));
    if (!text.empty()) text.remove_prefix(1);
    return number;
}

}  // namespace

std::optional<std::int64_t> postgresMoment(std::string_view text) {
    using namespace std::chrono;
    constexpr sys_days kEpoch = year(2000) / 1 / 1;
    int count = take(text);
    if (count < kFirstYear || count > kLastYear) return std::nullopt;
    // The calendar repeats itself after 400 years, and the library's years end before the last one's.
    constexpr int kCycle = 400, kDaysOfCycle = 146'097;
    const int cycles = count / kCycle;
    count %= kCycle;
    const auto wholeMonth = static_cast<unsigned>(take(text)), wholeDay = static_cast<unsigned>(take(text));
    const sys_days day = year(count) / month(wholeMonth) / std::chrono::day(wholeDay);
    std::int64_t seconds = (day - kEpoch).count() + std::int64_t{cycles} * kDaysOfCycle;
    seconds = seconds * 24 + take(text);
    seconds = seconds * 60 + take(text);
    seconds = seconds * 60 + take(text);
    std::int64_t fraction = 0;
    for (size_t i = 0; i < kMicrosecondDigits; ++i)
        fraction = fraction * 10 + (i < text.size() ? text[i] - '0' : 0);
    return seconds * 1'000'000 + fraction;
}

}  // namespace host
