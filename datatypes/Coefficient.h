// The coefficient of a fixed decimal as sign and magnitude. For the library's own files.
#pragma once

#include <cstdint>

#include "datatypes/PowersOfTen.h"
#include "datatypes/TypeCodes.h"

namespace DataTypes::internal {

// The magnitude is at most 2^127, that of the smallest coefficient.
struct Coefficient {
    Coefficient(uint64_t high, uint64_t low)
        : negative(high >> 63 != 0),
          magnitude(negative ? 0 - makeUInt128(high, low) : makeUInt128(high, low)) {}

    void store(uint64_t& high, uint64_t& low) const {
        const UInt128 words = negative ? 0 - magnitude : magnitude;
        high = highOf(words);
        low = lowOf(words);
    }

    bool negative;
    UInt128 magnitude;
};

// Whether a precision and a scale are those of a decimal.
constexpr bool isDecimalShape(int precision, int scale) {
    return 0 <= precision && precision <= kMaxDecimalPrecision && 0 <= scale && scale <= kMaxDecimalPrecision;
}

}  // namespace DataTypes::internal
