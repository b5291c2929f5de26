// Fixed decimals as text.
#include "datatypes/Coefficient.h"
#include "datatypes/TextWriting.h"

namespace DataTypes::internal {
namespace {

constexpr int kPartDigits = 16;

// Sixteen digits in groups of four.
char* prependSixteen(char* end, uint64_t number) {
    const auto upper = static_cast<unsigned int>(number / 100000000);
    const auto lower = static_cast<unsigned int>(number % 100000000);
    char* const first = end - kPartDigits;
    appendFour(appendFour(appendFour(appendFour(first, upper / 10000), upper % 10000), lower / 10000),
               lower % 10000);
    return first;
}

}  // namespace

void writeDecimal(const FixedDecimalValue& value, char* out, size_t outSize) {
    constexpr int kMaxScale = 255;  // that the value's byte can hold
    constexpr int kMaxDigits = 48;
    const Coefficient coefficient(value.high, value.low);
    char text[kMaxDigits + kMaxScale + 3];
    char* const end = text + sizeof text;

    char* first = end;
    UInt128 magnitude = coefficient.magnitude;
    while (highOf(magnitude) != 0) {
        const UInt128 upper = scaleDown(magnitude, kPartDigits);
        first = prependSixteen(first, lowOf(magnitude - upper * kPowersOfTen64[kPartDigits]));
        magnitude = upper;
    }
    first = prependDigits(first, lowOf(magnitude), 0);

    // The whole part moves up to make room for the point; a number below one gets its zeros.
    const int scale = value.scale();
    if (scale != 0) {
        while (end - first <= scale) *--first = '0';
        const size_t whole = static_cast<size_t>(end - first - scale);
        std::memmove(first - 1, first, whole);
        --first;
        first[whole] = '.';
    } else if (first == end) {
        *--first = '0';
    }
    if (coefficient.negative) *--first = '-';
    copyText(first, static_cast<size_t>(end - first), out, outSize);
}

}  // namespace DataTypes::internal
