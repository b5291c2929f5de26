// Text handed out as char*: an array-new buffer that the caller releases with array delete.
#pragma once

#include <algorithm>
#include <string_view>

namespace host {

inline char* newText(std::string_view text) {
    char* copy = new char[text.size() + 1];
    *std::copy(text.begin(), text.end(), copy) = '\0';
    return copy;
}

}  // namespace host
