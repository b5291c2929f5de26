// One walk over a FIX message, shared by everything that reads one.
#pragma once

#include <emmintrin.h>

#include <bit>
#include <cstddef>
#include <cstdint>

namespace fix {

// Where a field stands in the text: tag, "=", value.
struct FieldPlace {
    const char* tag;
    const char* equals;
    const char* end;  // of the value

    const char* value() const { return equals + 1; }
    size_t tagLength() const { return static_cast<size_t>(equals - tag); }
    size_t valueLength() const { return static_cast<size_t>(end - value()); }
};

// Calls take(FieldPlace) for every field of [begin, end), in order. A piece between separators that holds no
// "=" or more than one is no field. Sixteen bytes are compared at a time: "=" and separator alone decide.
// `take` may change the text up to and with the field's end, which has been passed.
template <typename Take>
void forEachField(const char* begin, const char* end, char separator, Take take) {
    const char* piece = begin;
    const char* equals = nullptr;
    bool several = false;
    const auto endPiece = [&](const char* at) {
        if (equals != nullptr && !several) take(FieldPlace{piece, equals, at});
        piece = at + 1;
        equals = nullptr;
        several = false;
    };
    const auto meet = [&](const char* at) {
        if (*at == separator) {
            endPiece(at);
        } else if (equals == nullptr) {
            equals = at;
        } else {
            several = true;
        }
    };

    constexpr ptrdiff_t kBlock = sizeof(__m128i);
    const __m128i separators = _mm_set1_epi8(separator);
    const __m128i equalSigns = _mm_set1_epi8('=');
    const char* at = begin;
    for (; end - at >= kBlock; at += kBlock) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
        const __m128i hits =
            _mm_or_si128(_mm_cmpeq_epi8(block, separators), _mm_cmpeq_epi8(block, equalSigns));
        for (auto mask = static_cast<uint32_t>(_mm_movemask_epi8(hits)); mask != 0; mask &= mask - 1)
            meet(at + std::countr_zero(mask));
    }
    for (; at < end; ++at) {
        if (*at == separator || *at == '=') meet(at);
    }
    endPiece(end);
}

}  // namespace fix
