// UTF-8 and the JVM's modified UTF-8, in which U+0000 is C0 80 and a character beyond U+FFFF is the two
// halves of its surrogate pair, three bytes each. Texts without these are the same in both.
#pragma once

#include <string>
#include <string_view>

namespace host {

// Appends the text in modified UTF-8 to `out`. False for malformed UTF-8: `out` is untouched and
// `*position`, when given, gets the offset of the first byte that is wrong.
bool appendModifiedUtf8(std::string_view utf8, std::string& out, size_t* position = nullptr);

// Appends the text in UTF-8 to `out`; U+FFFD stands for every byte or half pair that is malformed.
void appendUtf8(std::string_view modified, std::string& out);

inline std::string toUtf8(std::string_view modified) {
    std::string text;
    appendUtf8(modified, text);
    return text;
}

}  // namespace host
