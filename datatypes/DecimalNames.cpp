// The names of the 35 x 35 decimal types, made by the compiler.
#include "datatypes/TypeCodes.h"

namespace DataTypes {
namespace {

constexpr size_t kNames = kDecimalNames * kDecimalNames;

struct NameTexts {
    char text[kNames][sizeof("decimal(34,34)")] = {};
};

constexpr char* appendNumber(char* end, size_t number) {
    if (number >= 10) *end++ = static_cast<char>('0' + number / 10);
    *end++ = static_cast<char>('0' + number % 10);
    return end;
}

consteval NameTexts makeTexts(const char* word) {
    NameTexts names;
    for (size_t precision = 0; precision < kDecimalNames; ++precision) {
        for (size_t scale = 0; scale <= precision; ++scale) {
            char* end = names.text[precision * kDecimalNames + scale];
            for (const char* letter = word; *letter != '\0'; ++letter) *end++ = *letter;
            *end++ = '(';
            end = appendNumber(end, precision);
            *end++ = ',';
            end = appendNumber(end, scale);
            *end = ')';
        }
    }
    return names;
}

consteval std::array<const char*, kNames> makeTable(const NameTexts& names) {
    std::array<const char*, kNames> table{};
    for (size_t i = 0; i < kNames; ++i) table[i] = names.text[i];
    return table;
}

constexpr NameTexts kLowerTexts = makeTexts("decimal");
constexpr NameTexts kUpperTexts = makeTexts("DECIMAL");

}  // namespace

constinit const std::array<const char*, kNames> decimalLower = makeTable(kLowerTexts);
constinit const std::array<const char*, kNames> decimalUpper = makeTable(kUpperTexts);

}  // namespace DataTypes
