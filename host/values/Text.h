// Pieces of sentences.
#pragma once

#include <string>
#include <string_view>

namespace host {

inline std::string inQuotes(std::string_view text) {
    std::string result = "\"";
    result += text;
    result += '"';
    return result;
}

// The longest beginning of at most so many bytes that holds no part of a character, which in UTF-8 is up to
// four bytes, and in modified UTF-8 may be two halves of three.
inline std::string_view wholeCharacters(std::string_view text, size_t most) {
    if (text.size() <= most) return text;
    const auto isHalf = [text](size_t at, int secondByte) {
        return at + 1 < text.size() && text[at] == '\xED' && (text[at + 1] & 0xF0) == secondByte;
    };
    constexpr size_t kHalf = 3;
    size_t length = most;
    while (length > 0 && (text[length] & 0xC0) == 0x80) --length;
    const bool isWithinPair = length >= kHalf && isHalf(length - kHalf, 0xA0) && isHalf(length, 0xB0);
    return text.substr(0, isWithinPair ? length - kHalf : length);
}

// The text in quotes, cut where it would bury the sentence.
inline std::string quoted(std::string_view text) {
    constexpr size_t kLongest = 200;
    if (text.size() <= kLongest) return inQuotes(text);
    return '"' + std::string(wholeCharacters(text, kLongest)) + "...\" (" + std::to_string(text.size()) +
           " bytes)";
}

// How many character cells a text in UTF-8 takes, near enough: one a code point.
inline size_t cellWidth(std::string_view utf8) {
    size_t cells = 0;
    for (const char c : utf8) cells += (c & 0xC0) != 0x80 ? 1 : 0;
    return cells;
}

// Letters of ASCII only.
inline char lowerCase(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

inline std::string lowerCase(std::string_view text) {
    std::string result;
    for (const char c : text) result += lowerCase(c);
    return result;
}

inline void addToList(std::string& list, std::string_view item, std::string_view separator = ", ") {
    if (!list.empty()) list += separator;
    list += item;
}

}  // namespace host
