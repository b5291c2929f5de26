// Fixed decimals: exact numbers of up to 34 digits, coefficient * 10^-scale, the coefficient a signed 128-bit
// integer.
//
// Nothing here throws or logs. An operation that fails returns false and leaves what it was to write
// untouched.
#pragma once

#include <cstdint>

namespace DataTypes {

// The value form.
struct FixedDecimalValue {
    uint64_t high;   // upper half of the two's-complement coefficient
    uint64_t low;    // lower half
    uint64_t shape;  // scale in the lowest byte, precision in the next

    int scale() const { return static_cast<int>(shape & 0xff); }
    int precision() const { return static_cast<int>(shape >> 8 & 0xff); }
    bool isNegative() const { return high >> 63 != 0; }

    // Tells whether the coefficient has more digits than the precision.
    bool checkPrecisionOverflow() const;

    // Sets the number under a precision and a scale, each 0 to 34; false when it needs more digits than the
    // precision. A text is blanks, a sign, digits with at most one point among them, an exponent ("e" or "E"
    // and a signed number), blanks; all optional but one digit. A double counts as the shortest decimal that
    // reads back as it; not a number and infinities fail. Digits beyond the scale are rounded, halves to
    // even.
    bool setDecimalValue(int precision, int scale, int value);
    bool setDecimalValue(int precision, int scale, long value);
    bool setDecimalValue(int precision, int scale, const char* text);
    bool setDecimalValue(int precision, int scale, double value);

    // These bring this value, the left operand, to the scale and precision of the result of an operation with
    // `other`, keeping the number; the caller then combines the coefficients. False when the precision would
    // exceed 34 or the coefficient 127 bits.
    bool toAdditionResultType(const FixedDecimalValue& other);
    bool toSubtractionResultType(const FixedDecimalValue& other);
    bool toMultiplicationResultType(const FixedDecimalValue& other);
    bool toDivisionResultType(const FixedDecimalValue& other);

    // Rescales to the other's scale, cutting digits off when that is smaller.
    bool toSameScale(const FixedDecimalValue& other);

    // Rescales the value of smaller scale to the larger scale and returns that; 4294967295 when it does not
    // fit.
    static unsigned int toMaxScale(FixedDecimalValue& a, FixedDecimalValue& b);
};

// These set the decimal code of an operation's result from two decimal codes whose scale is at most their
// precision; false, with `result` untouched, when its precision exceeds 34.
bool getFixedDecimalAdditionResultType(unsigned int& result, const unsigned int& a, const unsigned int& b);
bool getFixedDecimalSubtractionResultType(unsigned int& result, const unsigned int& a, const unsigned int& b);
bool getFixedDecimalMultiplicationResultType(unsigned int& result, const unsigned int& a,
                                             const unsigned int& b);
bool getFixedDecimalDivisionResultType(unsigned int& result, const unsigned int& a, const unsigned int& b);

// Replaces a type code by the decimal that holds its values; by the bare decimal code (precision and scale 0)
// for kinds without one, decimals themselves among them.
void maximizeTypeToFixedDecimal(unsigned int& code);

// Multiplies a coefficient by 10^n, or divides it by 10^-n truncating toward zero. False when the product
// reaches 2^127; zero takes any n.
bool decimal_shift(uint64_t& high, uint64_t& low, int n);

// These set the coefficient value * 10^scale; false when it does not fit in 127 bits.
bool decimal_setFromInt(uint64_t& high, uint64_t& low, int value, int scale);
bool decimal_setFromInt64(uint64_t& high, uint64_t& low, long value, int scale);

// These set the number without its fraction; false when it does not fit. A date is its count of seconds.
bool decimal_getInt(uint64_t high, uint64_t low, int scale, int& out);
bool decimal_getInt64(uint64_t high, uint64_t low, int scale, long& out);
bool decimal_getDate(uint64_t high, uint64_t low, int scale, long& out);

// Sets the double nearest to the number; false for a scale outside 0 to 63, the scales that a type code can
// carry.
bool decimal_getDouble(uint64_t high, uint64_t low, int scale, double& out);

// An IEEE 754-2008 decimal128 in its binary-integer-decimal encoding.
struct BID_UINT128 {
    uint64_t high;  // sign, exponent and the upper 49 bits of the magnitude
    uint64_t low;
};

// Encodes a decimal; false when the magnitude takes more than 113 bits or the scale has no exponent in the
// encoding.
bool toBID128(uint64_t high, uint64_t low, int scale, BID_UINT128& out);

// Decodes the coefficient alone: the caller must know the scale. Always true.
bool fromBID128(uint64_t& high, uint64_t& low, const BID_UINT128& in);

}  // namespace DataTypes
