// Binary values from hexadecimal text.
#include <array>
#include <cstring>
#include <limits>

#include "datatypes/TextReading.h"
#include "datatypes/ValueParsing.h"

namespace DataTypes {
namespace {

constexpr uint8_t kBlank = 0x10;
constexpr uint8_t kIllegal = 0x20;

// The nibble of each character.
constexpr auto kNibbles = [] {
    std::array<uint8_t, 256> nibbles{};
    nibbles.fill(kIllegal);
    for (const unsigned char blank : {'\t', ' ', '\r', '\n'}) nibbles[blank] = kBlank;
    for (uint8_t i = 0; i < 10; ++i) nibbles[static_cast<size_t>('0' + i)] = i;
    for (uint8_t i = 0; i < 6; ++i) {
        nibbles[static_cast<size_t>('a' + i)] = nibbles[static_cast<size_t>('A' + i)] =
            static_cast<uint8_t>(10 + i);
    }
    return nibbles;
}();

uint8_t nibbleOf(char c) { return kNibbles[static_cast<unsigned char>(c)]; }

// The bytes that the digits make, or -1 with the first fault of the text: nothing may be written before it is
// known good.
int64_t countBytes(const char* hex, size_t outSize, const char*& error) {
    size_t digits = 0;
    for (; *hex != '\0'; ++hex) {
        const uint8_t nibble = nibbleOf(*hex);
        if (nibble == kBlank) continue;
        if (nibble == kIllegal) {
            error = "Invalid hex character";
            return -1;
        }
        if (++digits / 2 > outSize) {
            error = "Output buffer too small";
            return -1;
        }
    }
    if (digits % 2 != 0) {
        error = "Odd number of characters in hex string";
        return -1;
    }
    return static_cast<int64_t>(digits / 2);
}

// Of a text known to be good.
void writeBytes(const char* hex, unsigned char* out) {
    bool upper = true;
    for (; *hex != '\0'; ++hex) {
        const uint8_t nibble = nibbleOf(*hex);
        if (nibble == kBlank) continue;
        if (upper) {
            *out = static_cast<unsigned char>(nibble << 4);
        } else {
            *out++ |= nibble;
        }
        upper = !upper;
    }
}

}  // namespace

bool internal::readHex(const char* hex, unsigned char* out, size_t size) {
    const char* reason = nullptr;  // the packers have one message for all
    if (countBytes(hex, size, reason) != static_cast<int64_t>(size)) return false;
    writeBytes(hex, out);
    return true;
}

int convertBinaryFromHexString(const char* hex, unsigned char* out, unsigned int outSize,
                               const char*& error) {
    if (hex == nullptr) return 0;
    constexpr unsigned int kMostBytes = std::numeric_limits<int>::max();  // that the result can tell
    const int64_t count = countBytes(hex, outSize < kMostBytes ? outSize : kMostBytes, error);
    if (count >= 0) writeBytes(hex, out);
    return static_cast<int>(count);
}

unsigned int getBinaryDataSizeFromHexString(const char* hex) {
    return hex == nullptr ? 0 : static_cast<unsigned int>(std::strlen(hex) / 2);
}

unsigned int getLengthFromPackedBinary(const unsigned char* packed) {
    if (packed == nullptr) return 0;
    uint32_t length = 0;
    std::memcpy(&length, packed, sizeof length);
    return __builtin_bswap32(length);
}

}  // namespace DataTypes
