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

// The text in quotes, cut where it would bury the sentence. A cut never leaves half a character.
inline std::string quoted(std::string_view text) {
    constexpr size_t kLongest = 200;
    if (text.size() <= kLongest) return inQuotes(text);
    size_t length = kLongest;
    while (length > 0 && (text[length] & 0xC0) == 0x80) --length;
    return '"' + std::string(text.substr(0, length)) + "...\" (" + std::to_string(text.size()) + " bytes)";
}

// How many character cells a text in UTF-8 takes, near enough: one a code point.
inline size_t cellWidth(std::string_view utf8) {
    size_t cells = 0;
    for (const char c : utf8) cells += (c & 0xC0) != 0x80 ? 1 : 0;
    return cells;
}

inline void addToList(std::string& list, std::string_view item, std::string_view separator = ", ") {
    if (!list.empty()) list += separator;
    list += item;
}

}  // namespace host
