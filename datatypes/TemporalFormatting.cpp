// Dates and times as text, always in UTC.
#include <cstdio>

#include "datatypes/TextWriting.h"

namespace DataTypes::internal {
namespace {

constexpr int64_t kSecondsPerDay = 86400;
constexpr size_t kMaxText = 48;

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

// Seconds whose year does not fit a tm count as the epoch.
int64_t representable(int64_t seconds) {
    constexpr int64_t kFirst = -67768040609740800;  // the year -2147481748
    constexpr int64_t kLast = 67768036191676799;    // the year 2147485547
    return kFirst <= seconds && seconds <= kLast ? seconds : 0;
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

char* appendTime(char* end, unsigned int secondOfDay) {
    end = appendTwo(end, secondOfDay / 3600);
    *end++ = ':';
    end = appendTwo(end, secondOfDay / 60 % 60);
    *end++ = ':';
    return appendTwo(end, secondOfDay % 60);
}

char* appendDateTime(char* end, int64_t seconds) {
    const Moment moment = momentOf(representable(seconds));
    end = appendDate(end, moment);
    *end++ = ' ';
    return appendTime(end, moment.second);
}

// Has `append` write a text from a beginning to the end that it returns: in place when the buffer holds any
// of them.
template <typename Append>
void write(bool utcSuffix, char* out, size_t outSize, Append append) {
    char text[kMaxText];
    char* const first = outSize > kMaxText ? out : text;
    char* end = append(first);
    if (utcSuffix) {
        std::memcpy(end, "+00", 3);
        end += 3;
    }
    if (first == out) {
        *end = '\0';
    } else {
        copyText(text, static_cast<size_t>(end - text), out, outSize);
    }
}

}  // namespace

void writeDate(int64_t seconds, bool utcSuffix, char* out, size_t outSize) {
    write(utcSuffix, out, outSize, [=](char* text) { return appendDateTime(text, seconds); });
}

void writeTime(int64_t seconds, bool utcSuffix, char* out, size_t outSize) {
    const FloorDivision days(representable(seconds), kSecondsPerDay);
    const auto second = static_cast<unsigned int>(days.remainder);
    write(utcSuffix, out, outSize, [=](char* text) { return appendTime(text, second); });
}

void writeTimestamp(int64_t millis, bool utcSuffix, char* out, size_t outSize) {
    const FloorDivision split(millis, 1000);
    write(utcSuffix, out, outSize, [&](char* text) {
        text = appendDateTime(text, split.quotient);
        appendFour(text, static_cast<unsigned int>(split.remainder));
        *text = '.';  // in place of the leading zero
        return text + 4;
    });
}

void writeBigdatetime(int64_t micros, bool utcSuffix, char* out, size_t outSize) {
    const FloorDivision split(micros, 1000000);
    const auto fraction = static_cast<unsigned int>(split.remainder);
    write(utcSuffix, out, outSize, [&](char* text) {
        text = appendDateTime(text, split.quotient);
        *text++ = '.';
        return appendFour(appendTwo(text, fraction / 10000), fraction % 10000);
    });
}

}  // namespace DataTypes::internal
