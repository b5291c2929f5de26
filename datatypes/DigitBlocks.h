// Characters sixteen at a time: a block has the first of them in its lowest byte. For the library's own
// files.
#pragma once

#include <emmintrin.h>

#include <array>
#include <cstdint>
#include <cstring>

#include "datatypes/FourDigits.h"
#include "datatypes/PowersOfTen.h"

namespace DataTypes::internal {

using Block = __m128i;

inline constexpr int kBlock = sizeof(Block);

template <typename Word>
Word loadWord(const char* from) {
    Word word;
    std::memcpy(&word, from, sizeof word);
    return word;
}

template <typename Word>
void storeWord(char* to, Word word) {
    std::memcpy(to, &word, sizeof word);
}

inline Block makeBlock(uint64_t first, uint64_t last) {
    return _mm_set_epi64x(static_cast<int64_t>(last), static_cast<int64_t>(first));
}
inline uint64_t firstEight(Block block) { return static_cast<uint64_t>(_mm_cvtsi128_si64(block)); }
inline uint64_t lastEight(Block block) { return firstEight(_mm_unpackhi_epi64(block, block)); }

// Where a block of these begins decides how many of its bytes are set, and where its point is.
inline constexpr auto kSetBytes = [] {
    std::array<char, 2 * sizeof(Block)> bytes{};
    for (size_t i = 0; i < kBlock; ++i) bytes[i] = -1;
    return bytes;
}();
inline constexpr auto kOnePoint = [] {
    std::array<char, 2 * sizeof(Block)> bytes{};
    bytes[kBlock] = '.';
    return bytes;
}();

// A mask of the first bytes, 0 to 16 of them.
inline Block firstBytes(int count) { return loadWord<Block>(kSetBytes.data() + kBlock - count); }

// The block with a point before the byte at an index and the last byte pushed out; itself for index 16.
inline Block insertPoint(Block block, int at) {
    const Block before = firstBytes(at);
    const Block point = loadWord<Block>(kOnePoint.data() + kBlock - at);
    return _mm_or_si128(_mm_or_si128(_mm_and_si128(before, block), point),
                        _mm_slli_si128(_mm_andnot_si128(before, block), 1));
}

// The block with the byte at an index taken out and those before it moved up, a zero first.
inline Block removeByte(Block block, int at) {
    const Block before = _mm_and_si128(firstBytes(at), block);
    return _mm_or_si128(_mm_andnot_si128(firstBytes(at + 1), block), _mm_slli_si128(before, 1));
}

// A bit for every byte above 9, the first byte's lowest.
inline unsigned int aboveNine(Block block) {
    const Block digits = _mm_cmpeq_epi8(_mm_min_epu8(block, _mm_set1_epi8(9)), block);
    return static_cast<unsigned int>(_mm_movemask_epi8(digits)) ^ 0xffff;
}

// The number whose digits are the bytes: neighbours are joined to pairs, pairs to fours, fours to eights.
inline uint64_t joinDigits(Block digits) {
    const Block pairs =
        _mm_add_epi16(_mm_mullo_epi16(_mm_and_si128(digits, _mm_set1_epi16(0xff)), _mm_set1_epi16(10)),
                      _mm_srli_epi16(digits, 8));
    const Block fours = _mm_madd_epi16(pairs, _mm_set1_epi32(1 << 16 | 100));
    const Block eights = _mm_madd_epi16(_mm_packs_epi32(fours, fours), _mm_set1_epi32(1 << 16 | 10000));
    const uint64_t both = firstEight(eights);
    return static_cast<uint32_t>(both) * kPowersOfTen64[kBlock / 2] + (both >> 32);
}

// The eight digits of a number below 10^8.
inline uint64_t eightDigits(uint32_t number) {
    const uint32_t upper = number / 10000;
    return loadWord<uint32_t>(PlixTypes::four2ascii[upper]) |
           uint64_t{loadWord<uint32_t>(PlixTypes::four2ascii[number - upper * 10000])} << 32;
}

// The sixteen digits of a number below 10^16.
inline Block sixteenDigits(uint64_t number) {
    constexpr uint64_t kHalf = kPowersOfTen64[kBlock / 2];
    const uint64_t upper = number / kHalf;
    return makeBlock(eightDigits(static_cast<uint32_t>(upper)),
                     eightDigits(static_cast<uint32_t>(number - upper * kHalf)));
}

}  // namespace DataTypes::internal
