#include "datatypes/FixedDecimal.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "datatypes/Coefficient.h"
#include "datatypes/PowersOfTen.h"
#include "datatypes/TypeCodes.h"

namespace DataTypes {

using internal::Coefficient;
using internal::kPowersOfTen;

namespace {

constexpr unsigned int kNoScale = 0xffffffff;

uint64_t makeShape(int precision, int scale) {
    return static_cast<uint64_t>(precision) << 8 | static_cast<uint64_t>(scale);
}

// Moves a value to a scale and precision at which it is the same number.
bool rescale(FixedDecimalValue& value, int precision, int scale) {
    constexpr int kMaxScale = 0xff;  // a byte of the third word
    if (precision > kMaxDecimalPrecision || scale > kMaxScale) return false;
    if (!decimal_shift(value.high, value.low, scale - value.scale())) return false;
    value.shape = makeShape(precision, scale);
    return true;
}

template <typename Int>
bool setWhole(FixedDecimalValue& target, int precision, int scale, Int number) {
    FixedDecimalValue value{};
    if (!internal::isDecimalShape(precision, scale)) return false;
    if (!decimal_setFromInt64(value.high, value.low, number, scale)) return false;
    value.shape = makeShape(precision, scale);
    if (value.checkPrecisionOverflow()) return false;
    target = value;
    return true;
}

// The quotient magnitude / 10^scale, correctly rounded, for scales whose power of ten takes up to 14 digits
// of 16 bits.
double roundedQuotient(UInt128 magnitude, int scale) {
    // Enough zero digits below the magnitude that the quotient has more bits than a double.
    constexpr int kZeroDigits = 18;
    constexpr int kDigits = kZeroDigits + 8;
    uint16_t number[kDigits] = {};
    for (int i = 0; i < 8; ++i) number[kZeroDigits + i] = static_cast<uint16_t>(magnitude >> 16 * i);
    uint16_t divisor[14] = {1};
    for (int i = 0; i < scale; ++i) mul1(divisor, 14, 10);
    uint16_t quotient[kDigits] = {};
    longdivmod(number, kDigits, divisor, 14, quotient);

    // The leading 64 bits; any bit cut off below them turns the last one on, so that it still breaks a tie.
    int top = kDigits - 1;
    while (quotient[top] == 0) --top;
    const int lowest = top - 4;
    UInt128 leading = 0;
    for (int i = top; i >= lowest; --i) leading = leading << 16 | quotient[i];
    bool sticky = false;
    for (int i = 0; i < lowest; ++i) sticky = sticky || quotient[i] != 0;
    for (const uint16_t digit : number) sticky = sticky || digit != 0;
    int exponent = 16 * (lowest - kZeroDigits);
    for (; internal::highOf(leading) != 0; leading >>= 1, ++exponent) sticky = sticky || leading % 2 != 0;
    return std::ldexp(static_cast<double>(internal::lowOf(leading) | (sticky ? 1 : 0)), exponent);
}

}  // namespace

bool FixedDecimalValue::checkPrecisionOverflow() const {
    if (precision() > internal::kMaxPower) return false;
    return Coefficient(high, low).magnitude >= kPowersOfTen[precision()].value;
}

bool FixedDecimalValue::setDecimalValue(int newPrecision, int newScale, int value) {
    return setWhole(*this, newPrecision, newScale, value);
}

bool FixedDecimalValue::setDecimalValue(int newPrecision, int newScale, long value) {
    return setWhole(*this, newPrecision, newScale, value);
}

bool FixedDecimalValue::toAdditionResultType(const FixedDecimalValue& other) {
    const int newScale = std::max(scale(), other.scale());
    const int integerDigits = std::max(precision() - scale(), other.precision() - other.scale());
    return rescale(*this, integerDigits + 1 + newScale, newScale);
}

bool FixedDecimalValue::toSubtractionResultType(const FixedDecimalValue& other) {
    return toAdditionResultType(other);
}

bool FixedDecimalValue::toMultiplicationResultType(const FixedDecimalValue& other) {
    return rescale(*this, precision() + other.precision() + 1, scale() + other.scale());
}

bool FixedDecimalValue::toDivisionResultType(const FixedDecimalValue& other) {
    return rescale(*this, precision() + other.precision() + other.scale() + 1,
                   other.precision() + scale() + 1);
}

bool FixedDecimalValue::toSameScale(const FixedDecimalValue& other) {
    if (!decimal_shift(high, low, other.scale() - scale())) return false;
    shape = (shape & ~uint64_t{0xff}) | static_cast<uint64_t>(other.scale());
    return true;
}

unsigned int FixedDecimalValue::toMaxScale(FixedDecimalValue& a, FixedDecimalValue& b) {
    FixedDecimalValue& smaller = a.scale() < b.scale() ? a : b;
    const FixedDecimalValue& larger = a.scale() < b.scale() ? b : a;
    return smaller.toSameScale(larger) ? static_cast<unsigned int>(larger.scale()) : kNoScale;
}

bool decimal_shift(uint64_t& high, uint64_t& low, int n) {
    if (n == 0) return true;
    Coefficient coefficient(high, low);
    if (n > 0 && !internal::scaleUp(coefficient.magnitude, n)) return false;
    // The count is compared before it is negated: the most negative int has no negation.
    if (n < 0)
        coefficient.magnitude = n < -internal::kMaxPower ? 0 : internal::scaleDown(coefficient.magnitude, -n);
    coefficient.store(high, low);
    return true;
}

bool decimal_setFromInt(uint64_t& high, uint64_t& low, int value, int scale) {
    return decimal_setFromInt64(high, low, value, scale);
}

bool decimal_setFromInt64(uint64_t& high, uint64_t& low, long value, int scale) {
    uint64_t newHigh = value < 0 ? ~uint64_t{0} : 0;  // sign extension
    uint64_t newLow = static_cast<uint64_t>(value);
    if (!decimal_shift(newHigh, newLow, scale)) return false;
    high = newHigh;
    low = newLow;
    return true;
}

bool decimal_getInt(uint64_t high, uint64_t low, int scale, int& out) {
    long wide = 0;
    if (!decimal_getInt64(high, low, scale, wide)) return false;
    if (wide < std::numeric_limits<int>::min() || wide > std::numeric_limits<int>::max()) return false;
    out = static_cast<int>(wide);
    return true;
}

bool decimal_getInt64(uint64_t high, uint64_t low, int scale, long& out) {
    if (scale < -internal::kMaxPower)
        scale = -internal::kMaxPower - 1;  // beyond any coefficient, and can be negated
    if (!decimal_shift(high, low, -scale)) return false;
    const uint64_t signExtension = low >> 63 != 0 ? ~uint64_t{0} : 0;
    if (high != signExtension) return false;
    out = static_cast<long>(low);
    return true;
}

bool decimal_getDate(uint64_t high, uint64_t low, int scale, long& out) {
    return decimal_getInt64(high, low, scale, out);
}

bool decimal_getDouble(uint64_t high, uint64_t low, int scale, double& out) {
    constexpr int kMaxTypeScale = 63;
    if (scale < 0 || scale > kMaxTypeScale) return false;
    constexpr UInt128 kExactIntegers = UInt128{1} << 53;
    constexpr int kExactPowers = 22;  // 10^22 is the last power of ten that a double holds exactly
    const Coefficient coefficient(high, low);
    double magnitude = 0.0;
    if (coefficient.magnitude <= kExactIntegers && scale <= kExactPowers) {
        magnitude =
            static_cast<double>(coefficient.magnitude) / static_cast<double>(kPowersOfTen[scale].value);
    } else if (coefficient.magnitude != 0) {
        magnitude = roundedQuotient(coefficient.magnitude, scale);
    }
    out = coefficient.negative ? -magnitude : magnitude;
    return true;
}

}  // namespace DataTypes
