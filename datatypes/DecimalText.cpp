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

// A run of digits read so far, with or without the point: the number is magnitude * 10^dropped, and a bit
// more when `inexact`.
struct Digits {
    UInt128 magnitude = 0;
    int significant = 0;   // digits in the magnitude, not counting leading zeros
    int64_t dropped = 0;   // digits that followed a full magnitude
    bool inexact = false;  // one of them was not zero
};

bool areEightDigits(uint64_t bytes) {
    constexpr uint64_t kUpperHalves = 0xf0f0f0f0f0f0f0f0;
    constexpr uint64_t kZeros = 0x3030303030303030;
    return (bytes & kUpperHalves) == kZeros && ((bytes + 0x0606060606060606) & kUpperHalves) == kZeros;
}

// The number in eight digit characters, the first in the lowest byte: neighbours are joined to pairs, pairs
// to fours, fours to the whole.
uint64_t numberOfEight(uint64_t bytes) {
    bytes -= 0x3030303030303030;
    bytes = bytes * 10 + (bytes >> 8);
    return (((bytes & 0x000000ff000000ff) * 0x000f424000000064) +
            ((bytes >> 16 & 0x000000ff000000ff) * 0x0000271000000001)) >>
           32;
}

// Reads digits up to the first other character, which it returns.
const char* readDigits(const char* text, const char* end, Digits& digits) {
    if (digits.significant == 0) {
        while (text != end && *text == '0') ++text;
    }
    uint64_t bytes = 0;
    while (end - text >= 8 && digits.significant + 8 <= kMaxSignificant) {
        std::memcpy(&bytes, text, sizeof bytes);
        if (!areEightDigits(bytes)) break;
        digits.magnitude = digits.magnitude * 100000000 + numberOfEight(bytes);
        digits.significant += 8;
        text += 8;
    }
    for (; text != end && isDigit(*text); ++text) {
        const unsigned digit = static_cast<unsigned>(*text - '0');
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
    if (shift >= 0) {
        if (whole == 0) return true;
        // With digits dropped the number is longer than any decimal already.
        return digits.dropped == 0 && shift <= internal::kMaxPower &&
               internal::scaleUp(whole, static_cast<int>(shift));
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
    const char* const integer = text;
    text = readDigits(text, end, digits);
    int64_t count = text - integer;
    int64_t shift = scale;
    if (text != end && *text == '.') {
        const char* const fraction = ++text;
        text = readDigits(text, end, digits);
        count += text - fraction;
        shift -= text - fraction;
    }
    int64_t exponent = 0;
    if (count == 0 || !readExponent(text, end, exponent)) return false;
    while (text != end && isSpace(*text)) ++text;
    if (text != end) return false;

    UInt128 whole = 0;
    if (!toWhole(digits, shift + exponent, whole) || whole >= kPowersOfTen[precision].value) return false;
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
