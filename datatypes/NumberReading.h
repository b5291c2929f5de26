// Reading of whole numbers as the C library does in the C locale, whatever locale the process has set.
// For the library's own files.
#pragma once

#include <cstdint>
#include <limits>

namespace DataTypes::internal {

// The digit that a character is; above 9 for any other character.
constexpr unsigned int digitOf(char c) { return static_cast<unsigned char>(c) - unsigned{'0'}; }

constexpr bool isDigit(char c) { return digitOf(c) <= 9; }

// The white space of the C locale: space, tab, line feed, vertical tab, form feed, carriage return.
constexpr bool isSpace(char c) { return c == ' ' || ('\t' <= c && c <= '\r'); }

struct LongReading {
    int64_t value;    // 0 when nothing was read, the nearest bound on an overflow
    const char* end;  // the first character not read; the start of the text when there is no number
    bool overflow;
};

// The digits from `digits` on, one at least, with the sign that came before them.
inline LongReading scanDigits(const char* digits, bool negative) {
    // Eighteen digits fit in any case; two at a time halve the chain of multiplications.
    const char* position = digits;
    uint64_t magnitude = 0;
    for (const char* const last = digits + 16; position <= last;) {
        const unsigned int first = digitOf(position[0]);
        if (first > 9) break;
        const unsigned int second = digitOf(position[1]);
        if (second > 9) {
            magnitude = magnitude * 10 + first;
            ++position;
            break;
        }
        magnitude = magnitude * 100 + (first * 10 + second);
        position += 2;
    }
    if (!isDigit(*position))
        return {static_cast<int64_t>(negative ? 0 - magnitude : magnitude), position, false};
    // What is left are the last digits of a number at the edge of the range, or beyond it.
    const uint64_t bound = static_cast<uint64_t>(std::numeric_limits<int64_t>::max()) + (negative ? 1 : 0);
    bool overflow = false;
    for (; isDigit(*position); ++position) {
        const auto digit = static_cast<uint64_t>(*position - '0');
        overflow = overflow || magnitude > (bound - digit) / 10;
        if (!overflow) magnitude = magnitude * 10 + digit;
    }
    if (overflow) magnitude = bound;
    return {static_cast<int64_t>(negative ? 0 - magnitude : magnitude), position, overflow};
}

// As strtoll(text, &end, 10): white space, a sign, digits.
inline LongReading scanLong(const char* text) {
    const char* position = text;
    while (isSpace(*position)) ++position;
    const bool negative = *position == '-';
    if (negative || *position == '+') ++position;
    if (!isDigit(*position)) return {0, text, false};
    return scanDigits(position, negative);
}

}  // namespace DataTypes::internal
