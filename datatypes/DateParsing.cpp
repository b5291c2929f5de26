#include "datatypes/DateParsing.h"

#include <array>
#include <cstring>
#include <iterator>
#include <string_view>

#include "datatypes/DateReading.h"
#include "datatypes/NumberReading.h"

namespace DataTypes {
namespace {

using internal::isSpace;

constexpr int kYearBase = 1900;

constexpr std::string_view kMonths[] = {"January",   "February", "March",    "April",
                                        "May",       "June",     "July",     "August",
                                        "September", "October",  "November", "December"};
constexpr std::string_view kWeekdays[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                          "Thursday", "Friday", "Saturday"};
constexpr size_t kAbbreviation = 3;  // letters of a name's short form

enum class Action {
    kNone,
    kNumber,
    kDiscard,
    kTwelveHour,
    kCentury,
    kYearOfCentury,
    kComposite,
    kMonth,
    kWeekday,
    kHalfDay,
    kSpace,
    kPercent
};

struct Conversion {
    char letter;
    const char* modifiers;  // the letters allowed before it
    Action action;
    int low = 0;
    int high = 0;
    int tm::*field = nullptr;  // where a number goes, less the bias
    int bias = 0;
    const char* composite = nullptr;  // the format it stands for
};

constexpr Conversion kConversions[] = {
    {'\0', "", Action::kNone},
    {'%', "", Action::kPercent},
    {'A', "", Action::kWeekday},
    {'a', "", Action::kWeekday},
    {'B', "", Action::kMonth},
    {'b', "", Action::kMonth},
    {'h', "", Action::kMonth},
    {'C', "E", Action::kCentury, 0, 99},
    {'c', "E", Action::kComposite, 0, 0, nullptr, 0, "%m/%d/%y %H:%M:%S"},
    {'D', "", Action::kComposite, 0, 0, nullptr, 0, "%m/%d/%y"},
    {'x', "E", Action::kComposite, 0, 0, nullptr, 0, "%m/%d/%y"},
    {'d', "O", Action::kNumber, 1, 31, &tm::tm_mday, 0},
    {'e', "O", Action::kNumber, 1, 31, &tm::tm_mday, 0},
    {'H', "O", Action::kNumber, 0, 23, &tm::tm_hour, 0},
    {'k', "", Action::kNumber, 0, 23, &tm::tm_hour, 0},
    {'I', "O", Action::kTwelveHour, 1, 12},
    {'l', "", Action::kTwelveHour, 1, 12},
    {'j', "", Action::kNumber, 1, 366, &tm::tm_yday, 1},
    {'M', "O", Action::kNumber, 0, 59, &tm::tm_min, 0},
    {'m', "O", Action::kNumber, 1, 12, &tm::tm_mon, 1},
    {'n', "", Action::kSpace},
    {'t', "", Action::kSpace},
    {'p', "", Action::kHalfDay},
    {'R', "", Action::kComposite, 0, 0, nullptr, 0, "%H:%M"},
    {'r', "", Action::kComposite, 0, 0, nullptr, 0, "%I:%M:%S %p"},
    {'S', "O", Action::kNumber, 0, 61, &tm::tm_sec, 0},
    {'T', "", Action::kComposite, 0, 0, nullptr, 0, "%H:%M:%S"},
    {'X', "E", Action::kComposite, 0, 0, nullptr, 0, "%H:%M:%S"},
    {'U', "O", Action::kDiscard, 0, 53},
    {'W', "O", Action::kDiscard, 0, 53},
    {'w', "O", Action::kNumber, 0, 6, &tm::tm_wday, 0},
    {'Y', "E", Action::kNumber, 0, 9999, &tm::tm_year, kYearBase},
    {'y', "EO", Action::kYearOfCentury, 0, 99},
};

// The row of each letter; characters without one have the first.
constexpr auto kRowOfLetter = [] {
    std::array<uint8_t, 256> rows{};
    for (size_t row = 1; row < std::size(kConversions); ++row) {
        rows[static_cast<unsigned char>(kConversions[row].letter)] = static_cast<uint8_t>(row);
    }
    return rows;
}();

const Conversion& conversionOf(char letter) {
    return kConversions[kRowOfLetter[static_cast<unsigned char>(letter)]];
}

// Reads a text by a format. Operations take the position in the text and return the one after what they read,
// null when the text does not match.
class DateReader {
public:
    DateReader(const char* end, tm& time) : end_(end), time_(time) {}

    const char* read(const char* text, const char* format);

private:
    const char* readOther(const char* text, const Conversion& conversion);
    const char* readNumber(const char* text, const Conversion& conversion, int& value) const;
    const char* readHalfDay(const char* text);
    const char* skipSpace(const char* text) const;
    void takeCentury(int century);
    void takeYearOfCentury(int year);
    bool startsWith(const char* text, std::string_view name) const;

    template <size_t size>
    const char* readName(const char* text, const std::string_view (&names)[size], int& index) const;

    const char* const end_;
    tm& time_;
    bool splitYear_ = false;  // a century or a year within one has been read
};

const char* DateReader::read(const char* text, const char* format) {
    for (; *format != '\0'; ++format) {
        if (*format != '%') {
            if (isSpace(*format)) {
                text = skipSpace(text);
            } else {
                if (text == end_ || *text != *format) return nullptr;
                ++text;
            }
            continue;
        }
        char modifier = *++format;
        if (modifier == 'E' || modifier == 'O') {
            ++format;
        } else {
            modifier = '\0';
        }
        const Conversion& conversion = conversionOf(*format);
        if (modifier != '\0' && std::strchr(conversion.modifiers, modifier) == nullptr) return nullptr;
        if (conversion.action == Action::kNumber) {
            int value = 0;
            text = readNumber(text, conversion, value);
            time_.*conversion.field = value - conversion.bias;
        } else {
            text = readOther(text, conversion);
        }
        if (text == nullptr) return nullptr;
    }
    return text;
}

const char* DateReader::readOther(const char* text, const Conversion& conversion) {
    int value = 0;
    switch (conversion.action) {
        case Action::kNone:
            return nullptr;
        case Action::kNumber:
        case Action::kDiscard:
            return readNumber(text, conversion, value);
        case Action::kTwelveHour:
            text = readNumber(text, conversion, value);
            time_.tm_hour = value % 12;
            return text;
        case Action::kCentury:
            text = readNumber(text, conversion, value);
            takeCentury(value);
            return text;
        case Action::kYearOfCentury:
            text = readNumber(text, conversion, value);
            takeYearOfCentury(value);
            return text;
        case Action::kComposite:
            return read(text, conversion.composite);
        case Action::kMonth:
            return readName(text, kMonths, time_.tm_mon);
        case Action::kWeekday:
            return readName(text, kWeekdays, time_.tm_wday);
        case Action::kHalfDay:
            return readHalfDay(text);
        case Action::kSpace:
            return skipSpace(text);
        case Action::kPercent:
            return text != end_ && *text == '%' ? text + 1 : nullptr;
    }
    return nullptr;
}

// Digits are taken while one more could still be within the maximum, and no more than the maximum has.
inline const char* DateReader::readNumber(const char* text, const Conversion& conversion, int& value) const {
    const int high = conversion.high;
    if (10 <= high && high <= 99 && end_ - text >= 2) {  // most fields: two digits, and no loop
        const unsigned int first = internal::digitOf(text[0]);
        const unsigned int second = internal::digitOf(text[1]);
        if (first <= 9 && second <= 9 && static_cast<int>(first) * 10 <= high) {
            value = static_cast<int>(first * 10 + second);
            return conversion.low <= value && value <= high ? text + 2 : nullptr;
        }
    }
    int number = 0;
    int least = 1;  // number with so many digits
    for (; text != end_ && least <= high && number * 10 <= high; least *= 10) {
        const unsigned int digit = internal::digitOf(*text);
        if (digit > 9) break;
        number = number * 10 + static_cast<int>(digit);
        ++text;
    }
    value = number;
    return least != 1 && conversion.low <= number && number <= high ? text : nullptr;
}

void DateReader::takeCentury(int century) {
    // The first one stands as it is read, not reduced by the base: a later year within it is added.
    time_.tm_year = century * 100 + (splitYear_ ? time_.tm_year % 100 : 0);
    splitYear_ = true;
}

void DateReader::takeYearOfCentury(int year) {
    constexpr int kFirstYearOf1900s = 69;
    const int century = year < kFirstYearOf1900s ? 100 : 0;  // counted from the base
    time_.tm_year = year + (splitYear_ ? time_.tm_year / 100 * 100 : century);
    splitYear_ = true;
}

// Compared with all that is left of the text, so nothing may follow it.
const char* DateReader::readHalfDay(const char* text) {
    const bool afternoon = startsWith(text, "PM");
    if (end_ - text != 2 || (!afternoon && !startsWith(text, "AM")) || time_.tm_hour > 11) return nullptr;
    if (afternoon) time_.tm_hour += 12;
    return end_;
}

const char* DateReader::skipSpace(const char* text) const {
    while (text != end_ && isSpace(*text)) ++text;
    return text;
}

constexpr char lowerCase(char c) { return 'A' <= c && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool DateReader::startsWith(const char* text, std::string_view name) const {
    if (static_cast<size_t>(end_ - text) < name.size()) return false;
    for (size_t i = 0; i < name.size(); ++i) {
        if (lowerCase(text[i]) != lowerCase(name[i])) return false;
    }
    return true;
}

template <size_t size>
const char* DateReader::readName(const char* text, const std::string_view (&names)[size], int& index) const {
    for (size_t i = 0; i < size; ++i) {
        if (!startsWith(text, names[i].substr(0, kAbbreviation))) continue;
        index = static_cast<int>(i);
        return text + (startsWith(text, names[i]) ? names[i].size() : kAbbreviation);
    }
    return nullptr;
}

}  // namespace

const char* internal::scanDate(const char* text, const char* end, const char* format, tm& result) {
    result = tm{};
    result.tm_year = 70;
    result.tm_mday = 1;
    return DateReader(end, result).read(text, format);
}

const char* strptime(const char* text, const char* format, tm* result) {
    return internal::scanDate(text, text + std::strlen(text), format, *result);
}

int64_t tm2sec(const tm* time) {
    constexpr int kFirstYear = 70;
    constexpr int kDaysTo1970 = 25508;
    // Days from the first of March to the first of each month: leap days then come last in their year.
    constexpr int kMonthOffsets[] = {306, 337, 0, 31, 61, 92, 122, 153, 184, 214, 245, 275};

    if (time->tm_year < kFirstYear) {
        tm local = *time;
        return mktime(&local);
    }
    if (time->tm_mon < 0 || time->tm_mon > 11) return -1;
    const int64_t year = time->tm_year - (time->tm_mon < 2 ? 1 : 0);
    const int64_t days = 365 * year + year / 4 - year / 100 + (year / 100 + 3) / 4 +
                         kMonthOffsets[time->tm_mon] + time->tm_mday - 1 - kDaysTo1970;
    const int64_t seconds = ((days * 24 + time->tm_hour) * 60 + time->tm_min) * 60 + time->tm_sec;
    return seconds < 0 ? -1 : seconds;
}

}  // namespace DataTypes
