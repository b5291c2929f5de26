#include "datatypes/DateParsing.h"

#include <array>
#include <cstring>
#include <iterator>
#include <string_view>

#include "datatypes/DateReading.h"
#include "datatypes/NumberReading.h"

namespace DataTypes {
namespace {

using internal::isDigit;
using internal::isSpace;

constexpr int kYearBase = 1900;

constexpr std::string_view kMonths[] = {"January",   "February", "March",    "April",
                                        "May",       "June",     "July",     "August",
                                        "September", "October",  "November", "December"};
constexpr std::string_view kWeekdays[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                          "Thursday", "Friday", "Saturday"};
constexpr size_t kAbbreviation = 3;  // letters of a name's short form

enum class Action {
    kNumber,
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
    int tm::*field = nullptr;  // where a number goes, less the bias; none: read and discarded
    int bias = 0;
    const char* composite = nullptr;  // the format it stands for
};

constexpr Conversion kConversions[] = {
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
    {'U', "O", Action::kNumber, 0, 53},
    {'W', "O", Action::kNumber, 0, 53},
    {'w', "O", Action::kNumber, 0, 6, &tm::tm_wday, 0},
    {'Y', "E", Action::kNumber, 0, 9999, &tm::tm_year, kYearBase},
    {'y', "EO", Action::kYearOfCentury, 0, 99},
};

constexpr uint8_t kNoConversion = 0xff;

// The row of each letter.
constexpr auto kRowOfLetter = [] {
    std::array<uint8_t, 128> rows{};
    rows.fill(kNoConversion);
    for (size_t row = 0; row < std::size(kConversions); ++row) {
        rows[static_cast<size_t>(kConversions[row].letter)] = static_cast<uint8_t>(row);
    }
    return rows;
}();

const Conversion* conversionOf(char letter) {
    const unsigned char index = static_cast<unsigned char>(letter);
    if (index >= kRowOfLetter.size() || kRowOfLetter[index] == kNoConversion) return nullptr;
    return &kConversions[kRowOfLetter[index]];
}

class DateReader {
public:
    DateReader(const char* text, const char* end, tm& time) : position_(text), end_(end), time_(time) {}

    bool read(const char* format);
    const char* position() const { return position_; }

private:
    bool convert(const Conversion& conversion);
    bool readNumber(const Conversion& conversion, int& value);
    bool readCentury(const Conversion& conversion);
    bool readYearOfCentury(const Conversion& conversion);
    bool readHalfDay();
    bool readLiteral(char literal);
    void skipSpace();
    bool startsWith(std::string_view name) const;

    template <size_t size>
    bool readName(const std::string_view (&names)[size], int& index);

    const char* position_;
    const char* const end_;
    tm& time_;
    bool splitYear_ = false;  // a century or a year within one has been read
};

bool DateReader::read(const char* format) {
    for (; *format != '\0'; ++format) {
        if (isSpace(*format)) {
            skipSpace();
        } else if (*format != '%') {
            if (!readLiteral(*format)) return false;
        } else {
            char modifier = '\0';
            ++format;
            if (*format == 'E' || *format == 'O') modifier = *format++;
            const Conversion* conversion = conversionOf(*format);
            if (conversion == nullptr) return false;
            if (modifier != '\0' && std::strchr(conversion->modifiers, modifier) == nullptr) return false;
            if (!convert(*conversion)) return false;
        }
    }
    return true;
}

bool DateReader::convert(const Conversion& conversion) {
    int value = 0;
    switch (conversion.action) {
        case Action::kNumber:
            if (!readNumber(conversion, value)) return false;
            if (conversion.field != nullptr) time_.*conversion.field = value - conversion.bias;
            return true;
        case Action::kTwelveHour:
            if (!readNumber(conversion, value)) return false;
            time_.tm_hour = value % 12;
            return true;
        case Action::kCentury:
            return readCentury(conversion);
        case Action::kYearOfCentury:
            return readYearOfCentury(conversion);
        case Action::kComposite:
            return read(conversion.composite);
        case Action::kMonth:
            return readName(kMonths, time_.tm_mon);
        case Action::kWeekday:
            return readName(kWeekdays, time_.tm_wday);
        case Action::kHalfDay:
            return readHalfDay();
        case Action::kSpace:
            skipSpace();
            return true;
        case Action::kPercent:
            return readLiteral('%');
    }
    return false;
}

// Digits are taken while one more could still be within the maximum, and no more than the maximum has.
bool DateReader::readNumber(const Conversion& conversion, int& value) {
    if (position_ == end_ || !isDigit(*position_)) return false;
    int room = conversion.high;
    do {
        value = value * 10 + (*position_++ - '0');
        room /= 10;
    } while (room != 0 && value * 10 <= conversion.high && position_ != end_ && isDigit(*position_));
    return conversion.low <= value && value <= conversion.high;
}

bool DateReader::readCentury(const Conversion& conversion) {
    int century = 0;
    if (!readNumber(conversion, century)) return false;
    // The first century stands as it is read, not reduced by the base: a later year within it is added.
    time_.tm_year = century * 100 + (splitYear_ ? time_.tm_year % 100 : 0);
    splitYear_ = true;
    return true;
}

bool DateReader::readYearOfCentury(const Conversion& conversion) {
    constexpr int kFirstYearOf1900s = 69;
    int year = 0;
    if (!readNumber(conversion, year)) return false;
    const int century = year < kFirstYearOf1900s ? 100 : 0;  // counted from the base
    time_.tm_year = year + (splitYear_ ? time_.tm_year / 100 * 100 : century);
    splitYear_ = true;
    return true;
}

// Compared with all that is left of the text, so nothing may follow it.
bool DateReader::readHalfDay() {
    const bool afternoon = startsWith("PM");
    if (end_ - position_ != 2 || (!afternoon && !startsWith("AM")) || time_.tm_hour > 11) return false;
    if (afternoon) time_.tm_hour += 12;
    position_ = end_;
    return true;
}

bool DateReader::readLiteral(char literal) {
    if (position_ == end_ || *position_ != literal) return false;
    ++position_;
    return true;
}

void DateReader::skipSpace() {
    while (position_ != end_ && isSpace(*position_)) ++position_;
}

constexpr char lowerCase(char c) { return 'A' <= c && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool DateReader::startsWith(std::string_view name) const {
    if (static_cast<size_t>(end_ - position_) < name.size()) return false;
    for (size_t i = 0; i < name.size(); ++i) {
        if (lowerCase(position_[i]) != lowerCase(name[i])) return false;
    }
    return true;
}

template <size_t size>
bool DateReader::readName(const std::string_view (&names)[size], int& index) {
    for (size_t i = 0; i < size; ++i) {
        if (!startsWith(names[i].substr(0, kAbbreviation))) continue;
        position_ += startsWith(names[i]) ? names[i].size() : kAbbreviation;
        index = static_cast<int>(i);
        return true;
    }
    return false;
}

}  // namespace

const char* internal::scanDate(const char* text, const char* end, const char* format, tm& result) {
    result = tm{};
    result.tm_year = 70;
    result.tm_mday = 1;
    DateReader reader(text, end, result);
    return reader.read(format) ? reader.position() : nullptr;
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
