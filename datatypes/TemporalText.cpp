// Dates, times, timestamps and bigdatetimes from text.
#include <cstdlib>
#include <cstring>
#include <limits>

#include "datatypes/DateParsing.h"
#include "datatypes/DateReading.h"
#include "datatypes/NumberReading.h"
#include "datatypes/Settings.h"
#include "datatypes/TextReading.h"
#include "datatypes/ValueParsing.h"

namespace DataTypes {
namespace internal {
namespace {

struct FractionKind {
    int digits;
    int64_t perSecond;
    const char* unsplit;
    const char* mismatch;
    const char* overflow;
};

constexpr FractionKind kMillis = {3, 1000,
                                  "could not split timestamp into datetime and millisecond portions.",
                                  "timestamp constant does not match format", "timestamp overflow"};
constexpr FractionKind kMicros = {6, 1000000,
                                  "could not split bigdatetime into datetime and microsecond portions.",
                                  "bigdatetime constant does not match format", "bigdatetime overflow"};
constexpr size_t kMaxFractionDigits = 6;

struct SplitText {
    const char* end;  // of the part before the last point
    char fraction[kMaxFractionDigits + 1];
};

// Spaces among the fraction's characters are skipped; what is missing is zeros. Other characters count,
// digits or not.
SplitText split(const char* text, const FractionKind& kind) {
    SplitText parts{nullptr, "000000"};
    parts.fraction[kind.digits] = '\0';
    const char* const point = std::strrchr(text, '.');
    parts.end = point != nullptr ? point : text + std::strlen(text);
    if (point == nullptr) return parts;
    const char* next = point + 1;
    for (int i = 0; i < kind.digits && *next != '\0'; ++next) {
        if (*next != ' ') parts.fraction[i++] = *next;
    }
    return parts;
}

bool isSecondsFormat(const char* format) { return std::strcmp(format, kSecondsFormat) == 0; }

bool readSeconds(const char* text, int64_t& seconds) {
    const LongReading reading = internal::scanLong(text);
    seconds = reading.value;
    return reading.end != text;
}

bool readByFormat(const char* text, const char* end, const char* format, int64_t& seconds) {
    tm time;
    if (internal::scanDate(text, end, format, time) == nullptr) return false;
    seconds = tm2sec(&time);
    return true;
}

bool readWholeSeconds(const char* text, const char* format, int64_t& value, const char*& error,
                      const char* notSeconds, const char* mismatch) {
    int64_t seconds = 0;
    if (isSecondsFormat(format)) {
        if (!readSeconds(text, seconds)) return fail(error, notSeconds);
    } else if (!readByFormat(text, text + std::strlen(text), format, seconds)) {
        return fail(error, mismatch);
    }
    value = seconds;
    return true;
}

bool readFractional(const char* text, const char* format, const FractionKind& kind, int64_t& value,
                    const char*& error) {
    if (text == nullptr) return fail(error, kind.unsplit);
    const SplitText parts = split(text, kind);
    int64_t seconds = 0;
    if (!(isSecondsFormat(format) ? readSeconds(text, seconds)
                                  : readByFormat(text, parts.end, format, seconds))) {
        return fail(error, kind.mismatch);
    }
    // Within the last second that a count of fractions holds, the fraction may still be too much.
    int64_t result = 0;
    if (__builtin_mul_overflow(seconds, kind.perSecond, &result) ||
        __builtin_add_overflow(result, internal::scanLong(parts.fraction).value, &result)) {
        return fail(error, kind.overflow);
    }
    value = result;
    return true;
}

bool splitIntoBlocks(const char* text, const FractionKind& kind, char*& datetimePart, char*& fractionPart) {
    if (text == nullptr) return false;
    const SplitText parts = split(text, kind);
    char* const datetime = strndup(text, static_cast<size_t>(parts.end - text));
    char* const fraction = strdup(parts.fraction);
    if (datetime == nullptr || fraction == nullptr) {
        free(datetime);
        free(fraction);
        return false;
    }
    datetimePart = datetime;
    fractionPart = fraction;
    return true;
}

}  // namespace

bool readDate(const char* text, const char* format, int64_t& seconds, const char*& error) {
    return readWholeSeconds(text, format, seconds, error, "date constant does not match standard format",
                            "date constant does not match format");
}

bool readTime(const char* text, const char* format, int64_t& seconds, const char*& error) {
    return readWholeSeconds(text, format, seconds, error, "time constant does not match standard format",
                            "time constant does not match format");
}

bool readTimestamp(const char* text, const char* format, int64_t& millis, const char*& error) {
    return readFractional(text, format, kMillis, millis, error);
}

bool readBigdatetime(const char* text, const char* format, int64_t& micros, const char*& error) {
    return readFractional(text, format, kMicros, micros, error);
}

}  // namespace internal

bool splitTimestamp(const char* text, char*& datetimePart, char*& fractionPart) {
    return internal::splitIntoBlocks(text, internal::kMillis, datetimePart, fractionPart);
}

bool splitBigdatetime(const char* text, char*& datetimePart, char*& fractionPart) {
    return internal::splitIntoBlocks(text, internal::kMicros, datetimePart, fractionPart);
}

}  // namespace DataTypes
