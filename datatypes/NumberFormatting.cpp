// Whole numbers and money as text.
#include "datatypes/TextWriting.h"

namespace DataTypes::internal {

void writePlain(bool negative, uint64_t whole, uint64_t fraction, int places, char* out, size_t outSize) {
    constexpr size_t kMostCharacters = 48;
    const int wholeDigits = countDigits(whole);
    const int length = (negative ? 1 : 0) + wholeDigits + (places != 0 ? 1 + places : 0);
    writeText<kMostCharacters>(static_cast<size_t>(length), out, outSize, [=](char* text) {
        if (negative) *text++ = '-';
        text = writeDigits(text, whole, wholeDigits);
        if (places == 0) return;
        *text++ = '.';
        writeDigits(text, fraction, places);
    });
}

void writeInteger(int64_t value, char* out, size_t outSize) {
    writePlain(value < 0, magnitudeOf(value), 0, 0, out, outSize);
}

void writeMoney(int64_t value, int places, char* out, size_t outSize) {
    const uint64_t magnitude = magnitudeOf(value);
    const uint64_t whole = scaleDown64(magnitude, places);
    const uint64_t fraction = magnitude - whole * kPowersOfTen64[static_cast<size_t>(places)];
    // Without places printf's zero still follows the point.
    writePlain(value < 0, whole, fraction, places != 0 ? places : 1, out, outSize);
}

}  // namespace DataTypes::internal
