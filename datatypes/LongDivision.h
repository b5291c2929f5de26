// Long multiplication and division: numbers of 16-bit digits, least significant digit first, and 128-bit
// numbers.
//
// Numbers are unsigned. The functions keep no state, and the compiler runs them too, to make the tables of
// powers.
#pragma once

#include <cstdint>

namespace DataTypes {

__extension__ typedef unsigned __int128 UInt128;

// Multiplies a number in place by one digit; returns the digit carried out at the top.
constexpr uint16_t mul1(uint16_t* number, int digits, uint16_t factor) {
    uint32_t carry = 0;
    for (int i = 0; i < digits; ++i) {
        carry += static_cast<uint32_t>(number[i]) * factor;
        number[i] = static_cast<uint16_t>(carry);
        carry >>= 16;
    }
    return static_cast<uint16_t>(carry);
}

// Divides a number in place by one digit, which must not be 0; returns the remainder.
constexpr uint16_t divmod1(uint16_t* number, int digits, uint16_t divisor) {
    uint32_t remainder = 0;
    for (int i = digits - 1; i >= 0; --i) {
        remainder = remainder << 16 | number[i];
        number[i] = static_cast<uint16_t>(remainder / divisor);
        remainder %= divisor;
    }
    return static_cast<uint16_t>(remainder);
}

// Divides `number`, which becomes the remainder, by `divisor`; writes as many digits of quotient as the
// number has. False, with nothing written, for a divisor of 0. `quotient` overlaps neither.
constexpr bool longdivmod(uint16_t* number, int digits, const uint16_t* divisor, int divisorDigits,
                          uint16_t* quotient) {
    while (divisorDigits > 0 && divisor[divisorDigits - 1] == 0) --divisorDigits;
    if (divisorDigits == 0) return false;
    if (divisorDigits == 1) {
        for (int i = 0; i < digits; ++i) quotient[i] = number[i];
        const uint16_t remainder = divmod1(quotient, digits, divisor[0]);
        for (int i = 0; i < digits; ++i) number[i] = i == 0 ? remainder : uint16_t{0};
        return true;
    }
    const uint64_t leading =
        static_cast<uint64_t>(divisor[divisorDigits - 1]) << 16 | divisor[divisorDigits - 2];
    for (int at = digits - 1; at >= 0; --at) {
        quotient[at] = 0;
        if (at + divisorDigits > digits) continue;
        // The leading three digits over the divisor's leading two: never too small, at most two too large.
        const int top = at + divisorDigits;
        uint64_t estimate = top < digits ? number[top] : 0;
        estimate = (estimate << 16 | number[top - 1]) << 16 | number[top - 2];
        estimate /= leading;

        int64_t borrow = 0;
        for (int i = 0; i < divisorDigits; ++i) {
            borrow += number[at + i] - static_cast<int64_t>(estimate * divisor[i]);
            number[at + i] = static_cast<uint16_t>(borrow);
            borrow >>= 16;
        }
        if (top < digits) borrow += number[top];
        while (borrow < 0) {
            --estimate;
            uint32_t carry = 0;
            for (int i = 0; i < divisorDigits; ++i) {
                carry += static_cast<uint32_t>(number[at + i]) + divisor[i];
                number[at + i] = static_cast<uint16_t>(carry);
                carry >>= 16;
            }
            borrow += carry;
        }
        if (top < digits) number[top] = 0;
        quotient[at] = static_cast<uint16_t>(estimate);
    }
    return true;
}

// Divides one 128-bit number by another into quotient and remainder; false, with nothing written, for a
// divisor of 0.
constexpr bool longdivmod128(uint64_t high, uint64_t low, uint64_t divisorHigh, uint64_t divisorLow,
                             uint64_t& quotientHigh, uint64_t& quotientLow, uint64_t& remainderHigh,
                             uint64_t& remainderLow) {
    const UInt128 divisor = UInt128{divisorHigh} << 64 | divisorLow;
    if (divisor == 0) return false;
    const UInt128 number = UInt128{high} << 64 | low;
    const UInt128 quotient = number / divisor;
    const UInt128 remainder = number % divisor;
    quotientHigh = static_cast<uint64_t>(quotient >> 64);
    quotientLow = static_cast<uint64_t>(quotient);
    remainderHigh = static_cast<uint64_t>(remainder >> 64);
    remainderLow = static_cast<uint64_t>(remainder);
    return true;
}

}  // namespace DataTypes
