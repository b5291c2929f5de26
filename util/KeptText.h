// Texts that are kept from message to message for their capacity.
#pragma once

#include <cstddef>
#include <string>

namespace util {

inline constexpr size_t kMostKeptBytes = 1 << 20;

// Whether one large message would keep its memory for as long as the text lives.
inline bool isLarge(const std::string& text) { return text.capacity() > kMostKeptBytes; }

inline void giveBackIfLarge(std::string& text) {
    if (isLarge(text)) std::string().swap(text);
}

}  // namespace util
