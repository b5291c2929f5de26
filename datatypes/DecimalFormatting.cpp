// Fixed decimals as text.
#include "datatypes/Coefficient.h"
#include "datatypes/TextWriting.h"

namespace DataTypes::internal {
namespace {

constexpr int kPart = 16;
constexpr int kMaxScale = 255;  // that the value's byte can hold

int countDigits128(UInt128 number) {
    if (highOf(number) == 0) return countDigits(lowOf(number));
    const int bits = 128 - __builtin_clzll(highOf(number));
    const int digits = bits * 1233 >> 12;  // as in countDigits; close enough for 128 bits too
    return digits + (number >= kPowersOfTen[static_cast<size_t>(digits)].value ? 1 : 0);
}

// Writes exactly `count` digits of a number that has no more; returns the end.
char* writeDigits128(char* first, UInt128 number, int count) {
    int left = count;
    while (highOf(number) != 0) {
        const UInt128 upper = scaleDown(number, kPart);
        left -= kPart;
        writeDigits(first + left, lowOf(number - upper * kPowersOfTen64[kPart]), kPart);
        number = upper;
    }
    writeDigits(first, lowOf(number), left);
    return first + count;
}

// Any magnitude at any scale.
void writeLarge(const Coefficient& coefficient, int scale, char* out, size_t outSize) {
    const UInt128 whole = scaleDown(coefficient.magnitude, scale);
    const int wholeDigits = countDigits128(whole);
    const int length = (coefficient.negative ? 1 : 0) + wholeDigits + (scale != 0 ? 1 + scale : 0);
    writeText<kMaxScale + 48>(static_cast<size_t>(length), out, outSize, [&](char* text) {
        if (coefficient.negative) *text++ = '-';
        text = writeDigits128(text, whole, wholeDigits);
        if (scale == 0) return;
        *text++ = '.';
        // Beyond all digits the whole part is nothing, and there is no power to take it from.
        UInt128 fraction = coefficient.magnitude;
        if (whole != 0) fraction -= whole * kPowersOfTen[static_cast<size_t>(scale)].value;
        writeDigits128(text, fraction, scale);
    });
}

}  // namespace

void writeDecimal(const FixedDecimalValue& value, char* out, size_t outSize) {
    const Coefficient coefficient(value.high, value.low);
    const int scale = value.scale();
    const bool small = coefficient.magnitude < kPowersOfTen64[kPart];
    const UInt128 upper = small ? 0 : scaleDown(coefficient.magnitude, kPart);
    if (upper >= kPowersOfTen64[18] || scale > kPart) return writeLarge(coefficient, scale, out, outSize);

    // Up to 34 digits, 16 of them at most behind the point: all in 64 bits.
    const auto lower = static_cast<uint64_t>(coefficient.magnitude - upper * kPowersOfTen64[kPart]);
    const uint64_t middle = scaleDown64(lower, scale);
    const uint64_t fraction = lower - middle * kPowersOfTen64[static_cast<size_t>(scale)];
    const auto top = static_cast<uint64_t>(upper);
    if (top == 0) return writePlain(coefficient.negative, middle, fraction, scale, out, outSize);
    const int topDigits = countDigits(top);
    const int length = (coefficient.negative ? 1 : 0) + topDigits + kPart + (scale != 0 ? 1 : 0);
    writeText<48>(static_cast<size_t>(length), out, outSize,
                  [=, negative = coefficient.negative](char* text) {
                      if (negative) *text++ = '-';
                      text = writeDigits(writeDigits(text, top, topDigits), middle, kPart - scale);
                      if (scale == 0) return;
                      *text++ = '.';
                      writeDigits(text, fraction, scale);
                  });
}

}  // namespace DataTypes::internal
