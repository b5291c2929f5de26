// Money from text.
#include <algorithm>
#include <cstring>
#include <limits>

#include "datatypes/NumberReading.h"
#include "datatypes/PowersOfTen.h"
#include "datatypes/TextReading.h"

namespace DataTypes::internal {
namespace {

constexpr char kBadEnd[] = "money constant does not end with a legal character";
constexpr char kOutOfRange[] = "money constant out of range";

// The first `places` characters after the point as a number, zeros standing for those that are missing.
// Digits beyond the places are cut off, and nothing beyond them is looked at.
bool readFraction(const char* text, int places, int64_t& fraction, const char*& error) {
    if (!isDigit(*text)) return fail(error, "money constant fractional part does not begin with a digit");
    int64_t value = 0;
    int read = 0;
    for (; read < places && text[read] != '\0'; ++read) {
        if (!isDigit(text[read])) return fail(error, kBadEnd);
        value = value * 10 + (text[read] - '0');
    }
    fraction = value * static_cast<int64_t>(kPowersOfTen64[static_cast<size_t>(places - read)]);
    return true;
}

}  // namespace

bool readMoney(const char* text, int places, int64_t& value, const char*& error) {
    const char* first = text;
    if (*text == '+' || *text == '-') {
        ++first;
    } else {
        while (isSpace(*first)) ++first;
    }
    int64_t whole = 0;
    const char* point = first;
    if (*first != '.') {
        if (!isDigit(*first)) return fail(error, "money constant does not begin with a legal character");
        const LongReading reading = scanLong(text);
        point = reading.end;
        if (*point != '.' && *point != '\0') return fail(error, kBadEnd);
        if (reading.overflow) return fail(error, kOutOfRange);
        whole = reading.value;
    }
    int64_t fraction = 0;
    if (*point == '.' && point[1] != '\0' && places > 0) {
        if (!readFraction(point + 1, places, fraction, error)) return false;
    }
    int64_t result = 0;
    const int64_t factor = static_cast<int64_t>(kPowersOfTen64[static_cast<size_t>(places)]);
    if (__builtin_mul_overflow(whole, factor, &result) ||
        __builtin_add_overflow(result, *text == '-' ? -fraction : fraction, &result)) {
        return fail(error, kOutOfRange);
    }
    value = result;
    return true;
}

}  // namespace DataTypes::internal
