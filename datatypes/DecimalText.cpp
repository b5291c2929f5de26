// Fixed decimals from text and from doubles.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

#include "datatypes/Coefficient.h"
#include "datatypes/DigitBlocks.h"
#include "datatypes/FixedDecimal.h"
#include "datatypes/NumberReading.h"

namespace DataTypes {
namespace {

using internal::Block;
using internal::isDigit;
using internal::isSpace;
using internal::kBlock;
using internal::kPowersOfTen;
using internal::kPowersOfTen64;
using internal::loadWord;

// More digits than a decimal has, yet few enough for 127 bits.
constexpr int kMaxSignificant = internal::kMaxPower;

// The number is magnitude * 10^exponent, and a bit more when `inexact`.
struct Digits {
    UInt128 magnitude = 0;
    int64_t exponent = 0;
    bool inexact = false;
};

// Characters as what they differ by from "0": up to 9 for digits alone.
constexpr uint64_t kZeros = 0x3030303030303030;
constexpr char kPoint = '.' ^ '0';

Block loadBlock(const char* text) {
    return _mm_xor_si128(loadWord<Block>(text), internal::makeBlock(kZeros, kZeros));
}

// A text of 1 to 15 characters at the end of a block of zeros. Words that overlap stand for those that would
// read beyond the text.
Block loadShort(const char* text, const char* end) {
    const auto count = static_cast<int>(end - text);
    if (count >= 8) {
        const uint64_t first = loadWord<uint64_t>(text) ^ kZeros;
        return internal::makeBlock(first << 8 * (15 - count) << 8, loadWord<uint64_t>(end - 8) ^ kZeros);
    }
    uint64_t characters = static_cast<uint8_t>(*text);
    if (count >= 4) {
        characters = loadWord<uint32_t>(text) | uint64_t{loadWord<uint32_t>(end - 4)} << 8 * (count - 4);
    } else if (count >= 2) {
        characters = loadWord<uint16_t>(text) | uint64_t{loadWord<uint16_t>(end - 2)} << 8 * (count - 2);
    }
    return internal::makeBlock(0, (characters ^ kZeros) << 8 * (8 - count));
}

// The number in a block of nothing but digits and at most one point, and the digits after that.
struct Piece {
    uint64_t number;
    int fraction;  // -1 without a point
};

inline bool readPiece(Block digits, Piece& piece) {
    piece.fraction = -1;
    if (const unsigned int others = internal::aboveNine(digits); others != 0) {
        const Block points = _mm_cmpeq_epi8(digits, _mm_set1_epi8(kPoint));
        if ((others & (others - 1)) != 0 || static_cast<unsigned int>(_mm_movemask_epi8(points)) != others)
            return false;
        const int at = __builtin_ctz(others);
        piece.fraction = kBlock - 1 - at;
        digits = internal::removeByte(digits, at);
    }
    piece.number = internal::joinDigits(digits);
    return true;
}

// Reads a text of nothing but digits and at most one point among them, in less than 16 characters.
inline bool readShort(const char* text, const char* end, Digits& digits) {
    Piece piece;
    if (text == end || !readPiece(loadShort(text, end), piece)) return false;
    digits.magnitude = piece.number;
    digits.exponent = std::min(-piece.fraction, 0);
    return end - text != 1 || piece.fraction != 0;
}

// In 16 to 38 characters, the digits that a magnitude takes.
[[gnu::noinline]] bool readBlocks(const char* text, const char* end, Digits& result) {
    Digits digits;
    bool pointed = false;
    while (text != end) {
        // The last block begins with characters that the one before it has had.
        const int count = static_cast<int>(std::min<ptrdiff_t>(end - text, kBlock));
        text += count;
        const Block block = _mm_andnot_si128(internal::firstBytes(kBlock - count), loadBlock(text - kBlock));
        Piece piece;
        if (!readPiece(block, piece)) return false;
        const bool point = piece.fraction >= 0;
        if (point && pointed) return false;
        if (point) digits.exponent = (text - end) - piece.fraction;
        pointed = pointed || point;
        digits.magnitude =
            digits.magnitude * kPowersOfTen64[static_cast<size_t>(count - (point ? 1 : 0))] + piece.number;
    }
    result = digits;
    return true;
}

inline bool readPlain(const char* text, const char* end, Digits& digits) {
    if (end - text < kBlock) return readShort(text, end, digits);
    return end - text <= kMaxSignificant && readBlocks(text, end, digits);
}

// Reads such a text of any length from two characters on.
bool readDigitwise(const char* text, const char* end, Digits& result) {
    Digits digits;
    int significant = 0;  // not counting leading zeros
    const char* point = nullptr;
    for (; text != end; ++text) {
        const unsigned int digit = internal::digitOf(*text);
        if (*text == '.' && point == nullptr) {
            point = text;
        } else if (digit > 9) {
            return false;
        } else if (significant < kMaxSignificant) {
            digits.magnitude = digits.magnitude * 10 + digit;
            if (digits.magnitude != 0) ++significant;
        } else {
            ++digits.exponent;
            digits.inexact = digits.inexact || digit != 0;
        }
    }
    if (point != nullptr) digits.exponent -= end - point - 1;
    result = digits;
    return true;
}

// Reads a sign and digits; a huge exponent is as good as any beyond all digits.
bool readExponent(const char* text, const char* end, int64_t& exponent) {
    const bool negative = text != end && *text == '-';
    if (text != end && (*text == '+' || *text == '-')) ++text;
    if (text == end) return false;
    constexpr int64_t kHuge = int64_t{1} << 60;
    int64_t magnitude = 0;
    for (; text != end; ++text) {
        if (!isDigit(*text)) return false;
        if (magnitude < kHuge / 10 - 1) magnitude = magnitude * 10 + (*text - '0');
    }
    exponent = negative ? -magnitude : magnitude;
    return true;
}

// Reads a text with all that it may have: blanks, either sign, an exponent, more digits than a magnitude
// takes.
[[gnu::noinline]] bool readAny(const char* text, const char* end, bool& negative, Digits& digits) {
    while (text != end && isSpace(*text)) ++text;
    negative = text != end && *text == '-';
    if (text != end && (*text == '+' || *text == '-')) ++text;
    while (end != text && isSpace(end[-1])) --end;
    const char* const last = std::find_if(text, end, [](char c) { return c == 'e' || c == 'E'; });
    int64_t exponent = 0;
    if (last != end && !readExponent(last + 1, end, exponent)) return false;
    const bool read =
        last - text > kMaxSignificant ? readDigitwise(text, last, digits) : readPlain(text, last, digits);
    digits.exponent += exponent;
    return read;
}

// The number at a scale as a whole one, halves rounded to even; false beyond 127 bits.
bool toWhole(const Digits& digits, int scale, UInt128& whole) {
    whole = digits.magnitude;
    const int64_t shift = scale + digits.exponent;
    // Digits that were left out need no look here: a full magnitude takes no more of them.
    if (shift >= 0) {
        if (whole == 0) return true;
        return shift <= internal::kMaxPower && internal::scaleUp(whole, static_cast<int>(shift));
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
    bool negative = text != end && *text == '-';
    Digits digits;
    if (!readPlain(negative ? text + 1 : text, end, digits) && !readAny(text, end, negative, digits))
        return false;
    UInt128 whole = 0;
    if (!toWhole(digits, scale, whole) || whole >= kPowersOfTen[precision].value) return false;
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
