// Dates and times as text, always in UTC.
#include <cstdio>
#include <limits>

#include "datatypes/TextWriting.h"

namespace DataTypes::internal {
namespace {

constexpr int64_t kSecondsPerDay = 86400;
constexpr size_t kMaxText = 64;

// Quotient rounded down, and the remainder from 0 up.
struct FloorDivision {
    FloorDivision(int64_t number, int64_t divisor) : quotient(number / divisor), remainder(number % divisor) {
        if (remainder >= 0) return;
        --quotient;
        remainder += divisor;
    }
    int64_t quotient;
    int64_t remainder;
};

struct Moment {
    int64_t year;
    unsigned int month;  // 1 to 12
    unsigned int day;
    unsigned int second;  // of the day
};

// Days are counted in years that begin in March, so that leap days come last: eras of 400 years are all
// alike.
Moment momentOf(int64_t seconds) {
    constexpr int64_t kDaysPerEra = 146097;
    constexpr int64_t kDaysFromYear0 = 719468;  // 0000-03-01 to 1970-01-01
    const FloorDivision days(seconds, kSecondsPerDay);
    const FloorDivision era(days.quotient + kDaysFromYear0, kDaysPerEra);
    const auto day = static_cast<unsigned int>(era.remainder);
    const unsigned int year = (day - day / 1460 + day / 36524 - day / 146096) / 365;
    const unsigned int dayOfYear = day - (365 * year + year / 4 - year / 100);
    const unsigned int month = (5 * dayOfYear + 2) / 153;  // from March
    Moment moment{};
    moment.year = era.quotient * 400 + year + (month >= 10 ? 1 : 0);
    moment.month = month < 10 ? month + 3 : month - 9;
    moment.day = dayOfYear - (153 * month + 2) / 5 + 1;
    moment.second = static_cast<unsigned int>(days.remainder);
    return moment;
}

// A moment whose year does not fit a tm counts as the epoch.
Moment representable(int64_t seconds) {
    constexpr int64_t kYearBase = 1900;
    const Moment moment = momentOf(seconds);
    const int64_t tmYear = moment.year - kYearBase;
    const bool fits = std::numeric_limits<int>::min() <= tmYear && tmYear <= std::numeric_limits<int>::max();
    return fits ? moment : momentOf(0);
}

// As "%04d".
char* appendYear(char* end, int64_t year) {
    if (0 <= year && year <= 9999) return appendFour(end, static_cast<unsigned int>(year));
    return end + std::snprintf(end, 16, "%04lld", static_cast<long long>(year));
}

char* appendDate(char* end, const Moment& moment) {
    end = appendYear(end, moment.year);
    *end++ = '-';
    end = appendTwo(end, moment.month);
    *end++ = '-';
    return appendTwo(end, moment.day);
}

char* appendTime(char* end, const Moment& moment) {
    end = appendTwo(end, moment.second / 3600);
    *end++ = ':';
    end = appendTwo(end, moment.second / 60 % 60);
    *end++ = ':';
    return appendTwo(end, moment.second % 60);
}

char* appendDateTime(char* end, int64_t seconds) {
    const Moment moment = representable(seconds);
    end = appendDate(end, moment);
    *end++ = ' ';
    return appendTime(end, moment);
}

void finish(char* text, char* end, bool utcSuffix, char* out, size_t outSize) {
    if (utcSuffix) {
        std::memcpy(end, "+00", 3);
        end += 3;
    }
    copyText(text, static_cast<size_t>(end - text), out, outSize);
}

}  // namespace

void writeDate(int64_t seconds, bool utcSuffix, char* out, size_t outSize) {
    char text[kMaxText];
    finish(text, appendDateTime(text, seconds), utcSuffix, out, outSize);
}

void writeTime(int64_t seconds, bool utcSuffix, char* out, size_t outSize) {
    char text[kMaxText];
    finish(text, appendTime(text, representable(seconds)), utcSuffix, out, outSize);
}

void writeTimestamp(int64_t millis, bool utcSuffix, char* out, size_t outSize) {
    const FloorDivision split(millis, 1000);
    char text[kMaxText];
    char* end = appendDateTime(text, split.quotient);
    end = appendFour(end, static_cast<unsigned int>(split.remainder));
    end[-4] = '.';  // in place of the leading zero
    finish(text, end, utcSuffix, out, outSize);
}

void writeBigdatetime(int64_t micros, bool utcSuffix, char* out, size_t outSize) {
    const FloorDivision split(micros, 1000000);
    const auto fraction = static_cast<unsigned int>(split.remainder);
    char text[kMaxText];
    char* end = appendDateTime(text, split.quotient);
    *end++ = '.';
    end = appendFour(appendTwo(end, fraction / 10000), fraction % 10000);
    finish(text, end, utcSuffix, out, outSize);
}

}  // namespace DataTypes::internal
