// Booleans from text.
#include <string_view>

#include "datatypes/TextReading.h"

namespace DataTypes::internal {
namespace {

struct Word {
    std::string_view text;
    uint8_t value;
    bool ends;  // nothing may follow it, not even blanks
};

constexpr Word kWords[] = {
    {"true", 1, false}, {"false", 0, false}, {"1", 1, false},  {"0", 0, false},
    {"yes", 1, false},  {"no", 0, false},    {"on", 1, false}, {"off", 0, false},
    {"t", 1, true},     {"f", 0, true},      {"y", 1, true},   {"n", 0, true},
};

constexpr bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }
constexpr char lowerCase(char c) { return 'A' <= c && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool matches(const char* text, std::string_view word) {
    for (const char letter : word) {
        if (lowerCase(*text++) != letter) return false;
    }
    return true;
}

bool onlyBlanks(const char* text) {
    while (isBlank(*text)) ++text;
    return *text == '\0';
}

}  // namespace

bool readBoolean(const char* text, uint8_t& value, const char*& error) {
    while (isBlank(*text)) ++text;
    for (const Word& word : kWords) {
        if (!matches(text, word.text)) continue;
        const char* rest = text + word.text.size();
        if (!(word.ends ? *rest == '\0' : onlyBlanks(rest))) continue;
        value = word.value;
        return true;
    }
    return fail(error, "not a legal boolean value");
}

}  // namespace DataTypes::internal
