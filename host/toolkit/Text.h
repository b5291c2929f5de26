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

inline void addToList(std::string& list, std::string_view item, std::string_view separator = ", ") {
    if (!list.empty()) list += separator;
    list += item;
}

}  // namespace host
