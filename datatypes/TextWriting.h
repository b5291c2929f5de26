// One writer per family of types behind convertToString. For the library's own files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "datatypes/FixedDecimal.h"
#include "datatypes/FourDigits.h"
#include "datatypes/PowersOfTen.h"

namespace DataTypes::internal {

// Each writes into the caller's buffer, cut to what fits with the NUL.
void writeInteger(int64_t value, char* out, size_t outSize);
void writeFloat(double value, size_t digits, double tolerance, char* out, size_t outSize);
void writeMoney(int64_t value, int places, char* out, size_t outSize);
void writeDecimal(const FixedDecimalValue& value, int scale, char* out, size_t outSize);
void writeDate(int64_t seconds, bool utcSuffix, char* out, size_t outSize);
void writeTime(int64_t seconds, bool utcSuffix, char* out, size_t outSize);
void writeTimestamp(int64_t millis, bool utcSuffix, char* out, size_t outSize);
void writeBigdatetime(int64_t micros, bool utcSuffix, char* out, size_t outSize);

// A sign, the digits of the whole part, and unless `places` is 0 a point and so many digits of the fraction.
void writePlain(bool negative, uint64_t whole, uint64_t fraction, int places, char* out, size_t outSize);

inline uint64_t magnitudeOf(int64_t value) {
    return value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
}

// As snprintf with "%s".
inline void copyText(const char* text, size_t length, char* out, size_t outSize) {
    if (outSize == 0) return;
    const size_t kept = length < outSize ? length : outSize - 1;
    std::memcpy(out, text, kept);
    out[kept] = '\0';
}

// Exactly that many digits of a number below 10^2, 10^4; the end of what was written.
inline char* appendTwo(char* end, unsigned int number) {
    std::memcpy(end, PlixTypes::four2ascii[number] + 2, 2);
    return end + 2;
}
inline char* appendFour(char* end, unsigned int number) {
    std::memcpy(end, PlixTypes::four2ascii[number], 4);
    return end + 4;
}

// Has `write` put a text of a known length, at most kCapacity, into the caller's buffer, or into one of its
// own when that is too small for all of it.
template <size_t kCapacity, typename Write>
void writeText(size_t length, char* out, size_t outSize, Write write) {
    if (length < outSize) {
        write(out);
        out[length] = '\0';
    } else {
        char text[kCapacity];
        write(text);
        copyText(text, length, out, outSize);
    }
}

// The digits that a number has; one of zero. The bits times the logarithm of two are them or one less.
inline int countDigits(uint64_t number) {
    number |= 1;
    const int bits = 64 - __builtin_clzll(number);
    const int digits = bits * 1233 >> 12;
    return digits + (number >= kPowersOfTen64[static_cast<size_t>(digits)] ? 1 : 0);
}

// Writes exactly `count` digits of a number that has no more; returns the end.
inline char* writeDigits(char* first, uint64_t number, int count) {
    char* at = first + count;
    for (; at - first >= 8; number /= 100000000) {
        const auto eight = static_cast<unsigned int>(number % 100000000);
        at -= 8;
        appendFour(appendFour(at, eight / 10000), eight % 10000);
    }
    if (at - first >= 4) {
        at -= 4;
        appendFour(at, static_cast<unsigned int>(number % 10000));
        number /= 10000;
    }
    const char* const rest = PlixTypes::four2ascii[number] + 4 - (at - first);
    switch (at - first) {
        case 3:
            first[2] = rest[2];
            [[fallthrough]];
        case 2:
            first[1] = rest[1];
            [[fallthrough]];
        case 1:
            first[0] = rest[0];
    }
    return first + count;
}

}  // namespace DataTypes::internal
