// Text handed out as char*: an array-new buffer that the caller releases with array delete.
#pragma once

#include <cstring>
#include <string_view>

namespace host {

inline char* newText(std::string_view text) {
    char* copy = new char[text.size() + 1];
    std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    return copy;
}

}  // namespace host
