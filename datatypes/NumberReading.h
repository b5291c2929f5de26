// Reading of whole numbers as the C library does in the C locale, whatever locale the process has set.
// For the library's own files.
#pragma once

#include <cstdint>
#include <limits>

namespace DataTypes::internal {

constexpr bool isDigit(char c) { return '0' <= c && c <= '9'; }

// The white space of the C locale: space, tab, line feed, vertical tab, form feed, carriage return.
constexpr bool isSpace(char c) { return c == ' ' || ('\t' <= c && c <= '\r'); }

struct LongReading {
    int64_t value;    // 0 when nothing was read, the nearest bound on an overflow
    const char* end;  // the first character not read; the start of the text when there is no number
    bool overflow;
};

// As strtoll(text, &end, 10): white space, a sign, digits.
inline LongReading scanLong(const char* text) {
    const char* position = text;
    while (isSpace(*position)) ++position;
    const bool negative = *position == '-';
    if (negative || *position == '+') ++position;
    if (!isDigit(*position)) return {0, text, false};

    constexpr uint64_t kSafeToExtend = std::numeric_limits<int64_t>::max() / 10 - 1;
    uint64_t magnitude = 0;
    for (; isDigit(*position) && magnitude <= kSafeToExtend; ++position) {
        magnitude = magnitude * 10 + static_cast<uint64_t>(*position - '0');
    }
    // What is left are the last digits of a number at the edge of the range, or beyond it.
    const uint64_t bound = static_cast<uint64_t>(std::numeric_limits<int64_t>::max()) + (negative ? 1 : 0);
    bool overflow = false;
    for (; isDigit(*position); ++position) {
        const uint64_t digit = static_cast<uint64_t>(*position - '0');
        overflow = overflow || magnitude > (bound - digit) / 10;
        if (!overflow) magnitude = magnitude * 10 + digit;
    }
    if (overflow) magnitude = bound;
    return {static_cast<int64_t>(negative ? 0 - magnitude : magnitude), position, overflow};
}

}  // namespace DataTypes::internal
