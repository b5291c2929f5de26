// Fixed decimals from text and from doubles.
#include <charconv>
#include <cmath>
#include <cstring>

#include "datatypes/Coefficient.h"
#include "datatypes/FixedDecimal.h"
#include "datatypes/NumberReading.h"

namespace DataTypes {
namespace {

using internal::isDigit;
using internal::isSpace;
using internal::kPowersOfTen;
using internal::kPowersOfTen64;

// More digits than a decimal has, yet few enough for 127 bits.
constexpr int kMaxSignificant = internal::kMaxPower;

// The digits of a text, without their point: the number is magnitude * 10^dropped, and a bit more when
// `inexact`.
struct Digits {
    UInt128 magnitude = 0;
    int significant = 0;          // digits in the magnitude, not counting leading zeros
    int64_t dropped = 0;          // digits that followed a full magnitude
    bool inexact = false;         // one of them was not zero
    const char* point = nullptr;  // where it is, if it is
};

// Up to eight characters, the first in the lowest byte and zeros after the last. Two loads that overlap stand
// for those that would read beyond it.
uint64_t loadCharacters(const char* text, const char* end) {
    const size_t left = static_cast<size_t>(end - text);
    const auto load = [text](auto word, size_t at) {
        std::memcpy(&word, text + at, sizeof word);
        return static_cast<uint64_t>(word);
    };
    if (left >= 8) return load(uint64_t{}, 0);
    if (left >= 4) return load(uint32_t{}, 0) | load(uint32_t{}, left - 4) << 8 * (left - 4);
    if (left >= 2) return load(uint16_t{}, 0) | load(uint16_t{}, left - 2) << 8 * (left - 2);
    return left == 1 ? load(uint8_t{}, 0) : 0;
}

// How many of the characters are digits before the first that is none: one below "0" turns negative with the
// first term, one above "9" with the second.
int countDigits(uint64_t characters) {
    const uint64_t others =
        ((characters - 0x3030303030303030) | (characters + 0x4646464646464646)) & 0x8080808080808080;
    return others == 0 ? 8 : __builtin_ctzll(others) / 8;
}

// The number in the first digits: neighbours are joined to pairs, pairs to fours, fours to the whole.
uint64_t numberOf(uint64_t characters, int count) {
    if (count == 0) return 0;
    uint64_t digits = (characters & 0x0f0f0f0f0f0f0f0f) << 8 * (8 - count);
    digits = digits * 10 + (digits >> 8);
    return ((digits & 0x000000ff000000ff) * 0x000f424000000064 +
            (digits >> 16 & 0x000000ff000000ff) * 0x0000271000000001) >>
           32;
}

// Goes on where the magnitude is nearly full, a digit at a time.
const char* readRest(const char* text, const char* end, Digits& digits) {
    for (; text != end && isDigit(*text); ++text) {
        const unsigned int digit = internal::digitOf(*text);
        if (digits.significant < kMaxSignificant) {
            digits.magnitude = digits.magnitude * 10 + digit;
            ++digits.significant;
        } else {
            ++digits.dropped;
            digits.inexact = digits.inexact || digit != 0;
        }
    }
    return text;
}

// Reads digits with at most one point among them; returns the first other character.
const char* readDigits(const char* text, const char* end, Digits& result) {
    Digits digits;
    for (;;) {
        if (digits.significant == 0) {
            while (text != end && *text == '0') ++text;
        }
        int count = 8;
        while (count == 8 && digits.significant + 8 <= kMaxSignificant) {
            const uint64_t characters = loadCharacters(text, end);
            count = countDigits(characters);
            digits.magnitude =
                digits.magnitude * kPowersOfTen64[static_cast<size_t>(count)] + numberOf(characters, count);
            digits.significant += count;
            text += count;
        }
        if (count == 8) text = readRest(text, end, digits);
        if (text == end || *text != '.' || digits.point != nullptr) break;
        digits.point = text++;
    }
    result = digits;
    return text;
}

// Reads "e", a sign and digits, if they are there and whole; a huge exponent is as good as any beyond all
// digits.
bool readExponent(const char*& text, const char* end, int64_t& exponent) {
    if (text == end || (*text != 'e' && *text != 'E')) return true;
    ++text;
    const bool negative = text != end && *text == '-';
    if (text != end && (*text == '+' || *text == '-')) ++text;
    if (text == end || !isDigit(*text)) return false;
    constexpr int64_t kHuge = int64_t{1} << 60;
    int64_t magnitude = 0;
    for (; text != end && isDigit(*text); ++text) {
        if (magnitude < kHuge / 10 - 1) magnitude = magnitude * 10 + (*text - '0');
    }
    exponent = negative ? -magnitude : magnitude;
    return true;
}

// The digits times 10^shift as a whole number, halves rounded to even; false beyond 127 bits.
bool toWhole(const Digits& digits, int64_t shift, UInt128& whole) {
    whole = digits.magnitude;
    shift += digits.dropped;
    // Digits that were dropped need no look here: a full magnitude takes no more of them.
    if (shift >= 0) {
        if (whole == 0) return true;
        return shift <= internal::kMaxPower && internal::scaleUp(whole, static_cast<int>(shift));
    }
    if (shift < -internal::kMaxPower) {
        whole = 0;
        return true;
    }
    const int places = static_cast<int>(-shift);
    whole = internal::scaleDown(digits.magnitude, places);
    const UInt128 rest = digits.magnitude - whole * kPowersOfTen[places].value;
    const UInt128 half = kPowersOfTen[places].value / 2;
    if (rest > half || (rest == half && (digits.inexact || whole % 2 != 0))) ++whole;
    return true;
}

bool setFromText(FixedDecimalValue& target, int precision, int scale, const char* text, const char* end) {
    while (text != end && isSpace(*text)) ++text;
    const bool negative = text != end && *text == '-';
    if (text != end && (*text == '+' || *text == '-')) ++text;

    Digits digits;
    const char* const first = text;
    text = readDigits(text, end, digits);
    const int64_t fraction = digits.point != nullptr ? text - digits.point - 1 : 0;
    const int64_t count = text - first - (digits.point != nullptr ? 1 : 0);
    int64_t exponent = 0;
    if (count == 0 || !readExponent(text, end, exponent)) return false;
    while (text != end && isSpace(*text)) ++text;
    if (text != end) return false;

    UInt128 whole = 0;
    if (!toWhole(digits, scale + exponent - fraction, whole) || whole >= kPowersOfTen[precision].value)
        return false;
    internal::Coefficient coefficient(internal::highOf(whole), internal::lowOf(whole));
    coefficient.negative = negative;
    coefficient.store(target.high, target.low);
    target.shape = static_cast<uint64_t>(precision) << 8 | static_cast<uint64_t>(scale);
    return true;
}

}  // namespace

bool FixedDecimalValue::setDecimalValue(int newPrecision, int newScale, const char* text) {
    if (text == nullptr || !internal::isDecimalShape(newPrecision, newScale)) return false;
    return setFromText(*this, newPrecision, newScale, text, text + std::strlen(text));
}

bool FixedDecimalValue::setDecimalValue(int newPrecision, int newScale, double value) {
    if (!std::isfinite(value) || !internal::isDecimalShape(newPrecision, newScale)) return false;
    char text[32];
    const char* end = std::to_chars(text, text + sizeof text, value, std::chars_format::scientific).ptr;
    return setFromText(*this, newPrecision, newScale, text, end);
}

}  // namespace DataTypes
