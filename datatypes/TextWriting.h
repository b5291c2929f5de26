// One writer per family of types behind convertToString. For the library's own files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "datatypes/FixedDecimal.h"
#include "datatypes/FourDigits.h"

namespace DataTypes::internal {

// Each writes into the caller's buffer, cut to what fits with the NUL.
void writeInteger(int64_t value, char* out, size_t outSize);
void writeFloat(double value, size_t digits, double tolerance, char* out, size_t outSize);
void writeMoney(int64_t value, int places, char* out, size_t outSize);
void writeDecimal(const FixedDecimalValue& value, char* out, size_t outSize);
void writeDate(int64_t seconds, bool utcSuffix, char* out, size_t outSize);
void writeTime(int64_t seconds, bool utcSuffix, char* out, size_t outSize);
void writeTimestamp(int64_t millis, bool utcSuffix, char* out, size_t outSize);
void writeBigdatetime(int64_t micros, bool utcSuffix, char* out, size_t outSize);

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

// Writes the digits of a number that end before `end`, at least `least` of them (zero has none of its own);
// returns the first.
inline char* prependDigits(char* end, uint64_t number, int least) {
    char* first = end;
    for (; number >= 10000; number /= 10000) {
        first -= 4;
        std::memcpy(first, PlixTypes::four2ascii[number % 10000], 4);
    }
    for (; number != 0; number /= 10) *--first = static_cast<char>('0' + number % 10);
    while (end - first < least) *--first = '0';
    return first;
}

}  // namespace DataTypes::internal
