// Fixed decimals as text.
#include <algorithm>

#include "datatypes/Coefficient.h"
#include "datatypes/DigitBlocks.h"
#include "datatypes/TextWriting.h"

namespace DataTypes::internal {
namespace {

constexpr size_t kMost = 37;    // what is written straight to the buffer: a sign, 34 digits, a point, the NUL
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
        const UInt128 upper = scaleDown(number, kBlock);
        left -= kBlock;
        writeDigits(first + left, lowOf(number - upper * kPowersOfTen64[kBlock]), kBlock);
        number = upper;
    }
    writeDigits(first, lowOf(number), left);
    return first + count;
}

// Any magnitude at any scale into any buffer.
void writeAny(const Coefficient& coefficient, int scale, char* out, size_t outSize) {
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

// Writes up to seven characters.
void writeFew(char* text, uint64_t characters, int count) {
    for (; count > 0; --count, characters >>= 8) *text++ = static_cast<char>(characters);
}

// Up to 16 digits, one of them at least before the point; returns the end. Words that overlap stand for the
// count of characters.
char* writeSmall(char* text, uint64_t magnitude, int scale) {
    const int digits = std::max(countDigits(magnitude), scale + 1);
    const Block block = sixteenDigits(magnitude);
    const Block pointed = insertPoint(block, kBlock - scale);
    uint64_t ending = lastEight(block);
    int count = digits;
    if (scale != 0) {
        ending = lastEight(pointed) >> 8 | ending >> 56 << 56;
        ++count;
    }
    if (count < 8) {
        writeFew(text, ending >> 8 * (8 - count), count);
    } else {
        const UInt128 characters = makeUInt128(lastEight(pointed), firstEight(pointed));
        storeWord(text, lowOf(characters >> 8 * (kBlock - digits)));
        if (count > kBlock) storeWord(text + 8, lastEight(pointed));
        storeWord(text + count - 8, ending);
    }
    return text + count;
}

// A number below 10^34 as quotient and rest of 10^16.
struct SplitNumber {
    explicit SplitNumber(UInt128 number) {
        // The 64 upper bits times 2^117 / 10^16, rounded down, make the quotient or one less.
        constexpr auto kReciprocal = static_cast<uint64_t>((UInt128{1} << 117) / kPowersOfTen64[kBlock]);
        const uint64_t upperBits = highOf(number) << 15 | lowOf(number) >> 49;
        const uint64_t quotient = highOf(UInt128{upperBits} * kReciprocal) >> 4;
        const uint64_t rest = lowOf(number) - quotient * kPowersOfTen64[kBlock];
        const bool less = rest >= kPowersOfTen64[kBlock];
        upper = quotient + (less ? 1 : 0);
        lower = rest - (less ? kPowersOfTen64[kBlock] : 0);
    }

    uint64_t upper;
    uint64_t lower;
};

// Up to 34 digits, 16 of them at most behind the point; returns the end. The digits ahead of the last 16 fill
// words of their own from the left; what is beyond them there is overwritten.
char* writeLarge(char* text, UInt128 magnitude, int scale) {
    const SplitNumber number(magnitude);
    const int upperDigits = countDigits(number.upper);
    const auto filled = [&](int count) {
        return number.upper * kPowersOfTen64[static_cast<size_t>(count - upperDigits)];
    };
    if (upperDigits <= 8) {
        storeWord(text, eightDigits(static_cast<uint32_t>(filled(8))));
    } else if (upperDigits <= kBlock) {
        storeWord(text, sixteenDigits(filled(kBlock)));
    } else {
        writeDigits(text, number.upper, upperDigits);
    }
    text += upperDigits;
    const Block block = sixteenDigits(number.lower);
    storeWord(text, insertPoint(block, kBlock - scale));
    text += kBlock;
    if (scale != 0) *text++ = static_cast<char>(lastEight(block) >> 56);
    return text;
}

// All other numbers and small buffers; apart, so that small numbers have no registers to save.
[[gnu::noinline]] void writeOther(const FixedDecimalValue& value, int scale, char* out, size_t outSize) {
    const Coefficient coefficient(value.high, value.low);
    if (outSize < kMost || scale > kBlock || coefficient.magnitude >= kPowersOfTen[34].value)
        return writeAny(coefficient, scale, out, outSize);
    if (coefficient.negative) *out++ = '-';
    *writeLarge(out, coefficient.magnitude, scale) = '\0';
}

}  // namespace

void writeDecimal(const FixedDecimalValue& value, int scale, char* out, size_t outSize) {
    const Coefficient coefficient(value.high, value.low);
    if (outSize < kMost || scale >= kBlock || coefficient.magnitude >= kPowersOfTen64[kBlock])
        return writeOther(value, scale, out, outSize);
    if (coefficient.negative) *out++ = '-';
    *writeSmall(out, lowOf(coefficient.magnitude), scale) = '\0';
}

}  // namespace DataTypes::internal
