// Floats as text.
#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>

#include "datatypes/TextWriting.h"
#include "datatypes/ValueFormatting.h"

namespace DataTypes {
namespace internal {
namespace {

constexpr int kPrintfDigits = 6;          // what printf writes when the count of digits is negative
constexpr int kMaxFractionDigits = 1074;  // of a double; all further ones are zeros
constexpr size_t kMaxFixedText = 1 + std::numeric_limits<double>::max_exponent10 + 2 + kMaxFractionDigits;

constexpr int kMantissaBits = 52;
constexpr int kExponentBias = 1075;
constexpr size_t kMaxQuickDigits = 18;

// The fraction rounded to `digits` digits, and what the rounding carries into the whole part, halves to even.
struct FixedParts {
    uint64_t whole;
    uint64_t fraction;
};

// Splits a magnitude below 2^53, exactly: a mantissa of 53 bits times 10^18 fits 128.
FixedParts splitFixed(uint64_t mantissa, int fractionBits, size_t digits) {
    FixedParts parts{0, 0};
    const UInt128 scale = kPowersOfTen64[digits];
    if (fractionBits >= 128) return parts;  // far below half of the last digit
    const UInt128 one = UInt128{1} << fractionBits;
    const UInt128 product = (mantissa & (one - 1)) * scale;
    parts.whole = static_cast<uint64_t>(UInt128{mantissa} >> fractionBits);
    parts.fraction = static_cast<uint64_t>(product >> fractionBits);
    const UInt128 rest = product & (one - 1);
    const bool odd = ((digits == 0 ? parts.whole : parts.fraction) & 1) != 0;
    if (rest > one / 2 || (rest == one / 2 && odd)) ++parts.fraction;
    if (parts.fraction == scale) {
        parts.fraction = 0;
        ++parts.whole;
    }
    return parts;
}

// "%.*f" of a double with a fraction and few digits; false when it is none.
bool writeQuickly(double value, size_t digits, char* out, size_t outSize) {
    const uint64_t bits = std::bit_cast<uint64_t>(value);
    const int exponent = static_cast<int>(bits >> kMantissaBits & 0x7ff);
    const int fractionBits = kExponentBias - exponent;
    if (digits > kMaxQuickDigits || fractionBits <= 0 || exponent == 0) return false;
    const uint64_t mantissa = (bits & ((uint64_t{1} << kMantissaBits) - 1)) | uint64_t{1} << kMantissaBits;
    const FixedParts parts = splitFixed(mantissa, fractionBits, digits);

    writePlain(bits >> 63 != 0, parts.whole, parts.fraction, static_cast<int>(digits), out, outSize);
    return true;
}

// "%.*f" with a count of digits as large as any.
void writeFixed(double value, int digits, char* out, size_t outSize) {
    if (digits < 0) digits = kPrintfDigits;
    if (writeQuickly(value, static_cast<size_t>(digits), out, outSize)) return;
    char text[kMaxFixedText];
    const int exact = std::min(digits, kMaxFractionDigits);
    const auto written = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, exact);
    const size_t length = static_cast<size_t>(written.ptr - text);
    copyText(text, length, out, outSize);
    if (digits == exact || !std::isfinite(value) || length + 1 >= outSize) return;
    const size_t zeros = std::min(outSize - 1 - length, static_cast<size_t>(digits - exact));
    std::memset(out + length, '0', zeros);
    out[length + zeros] = '\0';
}

void writeByChars(double value, std::chars_format format, int digits, char* out, size_t outSize) {
    char text[64];
    const auto written = std::to_chars(text, text + sizeof text, value, format, digits);
    copyText(text, static_cast<size_t>(written.ptr - text), out, outSize);
}

}  // namespace

void writeFloat(double value, size_t digits, double tolerance, char* out, size_t outSize) {
    constexpr double kLargestPlain = 1e80;
    const double magnitude = std::fabs(value);
    if (magnitude < tolerance) value = 0.0;
    if (magnitude > kLargestPlain) {
        writeByChars(value, std::chars_format::general, 25, out, outSize);
    } else {
        writeFixed(value, static_cast<int>(digits), out, outSize);
    }
}

}  // namespace internal

void convertDoubleToString(const unsigned int&, bool, DataValue& value, char* out, unsigned long outSize) {
    constexpr double kTooSmall = 1e-15;
    constexpr double kTooLarge = 1e16;
    constexpr int kDigits = 15;
    if (value.isNull) {
        internal::copyText("", 0, out, outSize);
        return;
    }
    const double magnitude = std::fabs(value.floatValue);
    if (magnitude <= kTooSmall || magnitude >= kTooLarge) {
        internal::writeByChars(value.floatValue, std::chars_format::scientific, kDigits, out, outSize);
        return;
    }
    // From 1e15 on the count is negative, which printf takes for not given. Not a number has no digits to
    // count.
    int digits = kDigits;
    if (magnitude >= 1) digits = kDigits - 1 - static_cast<int>(std::floor(std::log10(magnitude)));
    internal::writeFixed(value.floatValue, digits, out, outSize);
}

}  // namespace DataTypes
