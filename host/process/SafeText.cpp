#include "host/process/SafeText.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace host {

namespace {

struct Range {
    char32_t first;
    char32_t last;
};
constexpr Range kSteering[] = {{0, 0x1F}, {0x7F, 0x9F}, {0x2028, 0x202E}, {0x2066, 0x2069}};

bool isSteering(char32_t code) {
    return std::any_of(std::begin(kSteering), std::end(kSteering),
                       [code](Range range) { return code >= range.first && code <= range.last; });
}

struct Character {
    char32_t code;
    size_t length;
};

Character firstOf(std::string_view text) {
    const auto byte = [text](size_t i) { return static_cast<unsigned char>(text[i]); };
    const char32_t lead = byte(0);
    const size_t length = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (length == 1 || length > text.size()) return {lead, 1};
    char32_t code = lead & (0x7FU >> length);
    for (size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) return {lead, 1};
        code = code << 6 | (byte(i) & 0x3F);
    }
    return {code, length};
}

std::string escaped(char32_t code) {
    if (code == '\n') return "\\n";
    if (code == '\t') return "\\t";
    std::array<char, 12> escape;
    std::snprintf(escape.data(), escape.size(), code < 0x80 ? "\\x%02X" : "\\u%04X", unsigned{code});
    return escape.data();
}

}  // namespace

std::string oneLine(std::string_view utf8) {
    std::string result;
    while (!utf8.empty()) {
        const Character character = firstOf(utf8);
        if (isSteering(character.code)) {
            result += escaped(character.code);
        } else {
            result += utf8.substr(0, character.length);
        }
        utf8.remove_prefix(character.length);
    }
    return result;
}

}  // namespace host
