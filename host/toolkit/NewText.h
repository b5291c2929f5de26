// Texts of the C interface.
#pragma once

#include <algorithm>
#include <string_view>

namespace host {

// Handed out: an array-new buffer that the caller releases with array delete.
inline char* newText(std::string_view text) {
    char* copy = new char[text.size() + 1];
    *std::copy(text.begin(), text.end(), copy) = '\0';
    return copy;
}

// Handed in.
inline const char* orEmpty(const char* text) { return text != nullptr ? text : ""; }

}  // namespace host
