// Whole numbers and floats from text.
#include <cerrno>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <system_error>

#include "datatypes/NumberReading.h"
#include "datatypes/TextReading.h"

namespace DataTypes::internal {
namespace {

struct IntegerTexts {
    const char* badStart;
    const char* badEnd;
    const char* outOfRange;
};

constexpr IntegerTexts kInt16Texts = {"integer constant does not begin with a legal character",
                                      "integer constant does not end with a legal character",
                                      "16-bit integer constant out of range"};
constexpr IntegerTexts kIntegerTexts = {kInt16Texts.badStart, kInt16Texts.badEnd,
                                        "integer constant out of range"};
constexpr IntegerTexts kLongTexts = {"long constant does not begin with a legal character",
                                     "long constant does not end with a legal character",
                                     "long constant out of range"};
// Intervals tell an overflow with the integers' text.
constexpr IntegerTexts kIntervalTexts = {"interval constant does not begin with a legal character",
                                         "interval constant does not end with a legal character",
                                         "integer constant out of range"};

constexpr bool isSign(char c) { return c == '+' || c == '-'; }

template <typename Int>
bool readWhole(const char* text, const IntegerTexts& texts, Int& value, const char*& error) {
    const char* const digits = text + (isSign(*text) ? 1 : 0);
    // A sign alone is a good start, but of no number.
    if (!isDigit(*digits)) return fail(error, digits == text ? texts.badStart : texts.badEnd);
    const LongReading reading = scanDigits(digits, *text == '-');
    if (*reading.end != '\0') return fail(error, texts.badEnd);
    const int64_t wide = reading.value;
    if (reading.overflow || wide < std::numeric_limits<Int>::min() ||
        wide > std::numeric_limits<Int>::max()) {
        return fail(error, texts.outOfRange);
    }
    value = static_cast<Int>(wide);
    return true;
}

// The C library's reading in the C locale.
double readAsStrtod(const char* text, char*& end) {
    static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", nullptr);
    return strtod_l(text, &end, cLocale);
}

}  // namespace

bool readInt16(const char* text, int16_t& value, const char*& error) {
    return readWhole(text, kInt16Texts, value, error);
}

bool readInteger(const char* text, int32_t& value, const char*& error) {
    return readWhole(text, kIntegerTexts, value, error);
}

bool readLong(const char* text, int64_t& value, const char*& error) {
    return readWhole(text, kLongTexts, value, error);
}

bool readInterval(const char* text, int64_t& value, const char*& error) {
    if (!isDigit(text[isSign(*text) ? 1 : 0])) return fail(error, kIntervalTexts.badStart);
    return readWhole(text, kIntervalTexts, value, error);
}

bool readFloat(const char* text, double& value, const char*& error) {
    const char* const digits = text + (isSign(*text) ? 1 : 0);
    if (digits == text && *text != '.' && !isDigit(*text)) {
        return fail(error, "float constant does not begin with a legal character");
    }
    // from_chars knows neither "+" nor hexadecimal digits, and tells results near zero and infinity its own
    // way: what it does not plainly take goes to the C library.
    if (*digits == '.' || isDigit(*digits)) {
        const char* const end = digits + std::strlen(digits);
        double magnitude = 0.0;
        const std::from_chars_result read = std::from_chars(digits, end, magnitude);
        if (read.ec == std::errc() && read.ptr == end && std::isnormal(magnitude)) {
            value = *text == '-' ? -magnitude : magnitude;
            return true;
        }
    }
    char* end = nullptr;
    errno = 0;
    const double result = readAsStrtod(text, end);
    if (*end != '\0') return fail(error, "float constant does not end with a legal character");
    const bool outOfRange = result == 0.0 || std::fabs(result) > std::numeric_limits<double>::max();
    if (errno == ERANGE && outOfRange) return fail(error, "float constant out of range");
    value = result;
    return true;
}

}  // namespace DataTypes::internal
