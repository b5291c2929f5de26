// The library's strptime and tm2sec.
#include "datatypes/DateParsing.h"

#include <tuple>

#include "tests/datatypes/Support.h"

namespace DataTypes {
namespace {

// The fields that differ from 1970-01-01 00:00:00 and what is left of the text; "no match" for a null result.
std::string read(const std::string& text, const std::string& format) {
    tm time;
    std::memset(&time, 0x5a, sizeof time);
    const char* rest = DataTypes::strptime(text.c_str(), format.c_str(), &time);
    if (rest == nullptr) return "no match";
    EXPECT_TRUE(time.tm_isdst == 0 && time.tm_gmtoff == 0 && time.tm_zone == nullptr);
    std::string result;
    const std::tuple<char, int, int> fields[] = {{'S', time.tm_sec, 0},  {'M', time.tm_min, 0}, {'H', time.tm_hour, 0},
                                                 {'d', time.tm_mday, 1}, {'m', time.tm_mon, 0}, {'y', time.tm_year, 70},
                                                 {'w', time.tm_wday, 0}, {'j', time.tm_yday, 0}};
    for (const auto& [letter, value, usual] : fields)
        if (value != usual) result += letter + std::to_string(value) + " ";
    return result + "|" + rest;
}

TEST(DateParsing, ListedTexts) {
    for (const support::Case& row : support::readCases("dates.txt")) EXPECT_EQ(read(row[1], row[0]), row[2]) << row.line;
}

TEST(DateParsing, EveryConversionWithEveryModifier) {
    for (const support::Case& row : support::readCases("numbers.txt")) {
        for (const char* modifier : {"", "E", "O"}) {
            const bool allowed = row[1].find(modifier) != std::string::npos;
            for (size_t i = 2; i < row.fields.size(); i += 2)
                EXPECT_EQ(read(row[i], "%" + (modifier + row[0])), allowed ? row[i + 1] : "no match") << row.line << modifier;
        }
    }
}

// Before 1970 in local time, which the run in another zone tells from UTC.
TEST(CalendarSeconds, TakeFieldsAsTheyAre) {
    tzset();
    for (const support::Case& row : support::readCases("calendar.txt")) {
        tm time{};
        int* const fields[] = {&time.tm_year, &time.tm_mon, &time.tm_mday, &time.tm_hour, &time.tm_min, &time.tm_sec};
        for (size_t i = 0; i < std::size(fields); ++i) *fields[i] = row.number(i);
        EXPECT_EQ(tm2sec(&time), std::stol(row[6]) + (time.tm_year < 70 ? timezone : 0)) << row.line;
    }
}

}  // namespace
}  // namespace DataTypes
