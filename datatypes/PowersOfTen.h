// Unsigned 128-bit numbers and their powers of ten. For the library's own files.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "datatypes/LongDivision.h"

namespace DataTypes::internal {

inline constexpr auto kPowersOfTen64 = [] {
    std::array<uint64_t, 20> powers{1};
    for (size_t i = 1; i < powers.size(); ++i) powers[i] = powers[i - 1] * 10;
    return powers;
}();
static_assert(kPowersOfTen64.back() == 10000000000000000000u);

constexpr UInt128 makeUInt128(uint64_t high, uint64_t low) { return UInt128{high} << 64 | low; }
constexpr uint64_t highOf(UInt128 value) { return static_cast<uint64_t>(value >> 64); }
constexpr uint64_t lowOf(UInt128 value) { return static_cast<uint64_t>(value); }

inline constexpr int kMaxPower = 38;  // 10^38 is the last power below 2^127
inline constexpr UInt128 kMaxMagnitude = ~UInt128{0} >> 1;

// A power of ten and what multiplication and division by it need.
struct PowerOfTen {
    UInt128 value;
    UInt128 largestFactor;  // the largest magnitude whose product with it stays below 2^127
    UInt128 reciprocal;     // 2^(127 + bits) / value, rounded up; unused for 10^0
    int bits;               // the smallest with value <= 2^bits
};

consteval UInt128 reciprocalOf(UInt128 value, int bits) {
    // 2^(127 + bits) - 1 over the value, then plus one: the same as rounding up, as no power of ten from 10
    // on divides a power of two.
    uint16_t dividend[17] = {};
    for (int bit = 0; bit < 127 + bits; ++bit) dividend[bit / 16] |= static_cast<uint16_t>(1 << bit % 16);
    uint16_t divisor[8] = {};
    for (int i = 0; i < 8; ++i) divisor[i] = static_cast<uint16_t>(value >> 16 * i);
    uint16_t quotient[17] = {};
    longdivmod(dividend, 17, divisor, 8, quotient);
    UInt128 result = 0;
    for (int i = 7; i >= 0; --i) result = result << 16 | quotient[i];
    return result + 1;
}

consteval std::array<PowerOfTen, kMaxPower + 1> makePowersOfTen() {
    std::array<PowerOfTen, kMaxPower + 1> powers{};
    UInt128 value = 1;
    for (PowerOfTen& power : powers) {
        power.value = value;
        uint64_t high = 0, low = 0, restHigh = 0, restLow = 0;
        longdivmod128(highOf(kMaxMagnitude), lowOf(kMaxMagnitude), highOf(value), lowOf(value), high, low,
                      restHigh, restLow);
        power.largestFactor = makeUInt128(high, low);
        while (UInt128{1} << power.bits < value) ++power.bits;
        if (value != 1) power.reciprocal = reciprocalOf(value, power.bits);
        value *= 10;
    }
    return powers;
}

inline constexpr std::array<PowerOfTen, kMaxPower + 1> kPowersOfTen = makePowersOfTen();
static_assert(kPowersOfTen[kMaxPower].value == makeUInt128(0x4b3b4ca85a86c47a, 0x098a224000000000));
static_assert(kPowersOfTen[1].reciprocal == makeUInt128(0xcccccccccccccccc, 0xcccccccccccccccd));

// Multiplies by 10^digits; false, with the magnitude untouched, when the product reaches 2^127. Zero takes
// any count.
constexpr bool scaleUp(UInt128& magnitude, int digits) {
    if (magnitude == 0) return true;
    if (digits > kMaxPower || magnitude > kPowersOfTen[digits].largestFactor) return false;
    magnitude *= kPowersOfTen[digits].value;
    return true;
}

// The upper 128 bits of a product of 256.
constexpr UInt128 multiplyHigh(UInt128 a, UInt128 b) {
    const UInt128 low = UInt128{lowOf(a)} * lowOf(b);
    const UInt128 middle1 = UInt128{lowOf(a)} * highOf(b) + highOf(low);
    const UInt128 middle2 = UInt128{highOf(a)} * lowOf(b) + lowOf(middle1);
    return UInt128{highOf(a)} * highOf(b) + highOf(middle1) + highOf(middle2);
}

// The magnitude, at most 2^127, over 10^digits without the rest. The product with the rounded-up reciprocal
// is exact there: its error stays below one over the divisor, the least that a quotient lies below a whole
// number.
constexpr UInt128 scaleDown(UInt128 magnitude, int digits) {
    if (digits > kMaxPower) return 0;
    if (digits == 0) return magnitude;
    const PowerOfTen& power = kPowersOfTen[digits];
    return multiplyHigh(magnitude, power.reciprocal) >> (power.bits - 1);
}

// The same of a magnitude of at most 2^63, for up to 18 digits: the reciprocal's upper half, rounded up, does
// there.
constexpr uint64_t scaleDown64(uint64_t magnitude, int digits) {
    if (digits == 0) return magnitude;
    const PowerOfTen& power = kPowersOfTen[static_cast<size_t>(digits)];
    return highOf(UInt128{magnitude} * (highOf(power.reciprocal) + 1)) >> (power.bits - 1);
}

}  // namespace DataTypes::internal
