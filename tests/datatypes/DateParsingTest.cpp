// The library's strptime and tm2sec.
#include "datatypes/DateParsing.h"

#include "tests/datatypes/Support.h"

namespace DataTypes {
namespace {

// The fields that differ from 1970-01-01 00:00:00 and what is left of the text; "no match" for a null result.
std::string read(const std::string& text, const std::string& format) {
    tm time;
    std::memset(&time, 0x5a, sizeof time);
    const char* rest = DataTypes::strptime(text.c_str(), format.c_str(), &time);
    if (rest == nullptr) return "no match";
    const int values[] = {time.tm_sec, time.tm_min,       time.tm_hour, time.tm_mday - 1,
                          time.tm_mon, time.tm_year - 70, time.tm_wday, time.tm_yday};
    std::string result;
    for (size_t i = 0; i < std::size(values); ++i) {
        const int start = "SMHdmywj"[i] == 'd' ? 1 : "SMHdmywj"[i] == 'y' ? 70 : 0;
        if (values[i] != 0) result += "SMHdmywj"[i] + std::to_string(values[i] + start) + " ";
    }
    return result + "|" + rest;
}

TEST(DateParsing, ListedTexts) {
    for (const support::Case& row : support::readCases("dates.txt")) EXPECT_EQ(read(row[1], row[0]), row[2]) << row.where;
}

TEST(DateParsing, NumbersAtTheirBoundsAndOneOutside) {
    for (const support::Case& row : support::readCases("numbers.txt")) {
        SCOPED_TRACE(row.where);
        const auto checkNumber = [&row](int number, const std::string& expected) {
            EXPECT_EQ(read(std::to_string(number), "%" + row[0]), expected) << number;
            for (const char modifier : {'E', 'O'}) {
                const bool allowed = row[5].find(modifier) != std::string::npos;
                EXPECT_EQ(read(std::to_string(number), std::string("%") + modifier + row[0]), allowed ? expected : "no match");
            }
        };
        for (const size_t bound : {1u, 2u}) checkNumber(row.number(bound), row[bound + 2] + "|");
        EXPECT_TRUE(row.number(1) == 0 || read("0", "%" + row[0]) == "no match");
        checkNumber(row.number(2) + 1, row[6]);
        for (const char* text : {"x", "", "-1"}) EXPECT_EQ(read(text, "%" + row[0]), "no match") << text;
    }
}

tm broken(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
    tm time{};
    time.tm_year = year;
    time.tm_mon = month;
    time.tm_mday = day;
    time.tm_hour = hour;
    time.tm_min = minute;
    time.tm_sec = second;
    return time;
}

// From 1970 on the comparison with timegm covers what is normal.
TEST(CalendarSeconds, TakeFieldsAsTheyAre) {
    const std::pair<tm, int64_t> rows[] = {{broken(70, 0, 1), 0},
                                           {broken(120, 1, 30), 1583020800},  // 30 February
                                           {broken(70, 0, 1, 0, 0, -1), -1},
                                           {broken(70, 0, -5), -1},
                                           {broken(70, 12, 1), -1},
                                           {broken(70, -1, 1), -1},
                                           {broken(70, 0, 1, 30, 70, 70), 112270},
                                           {broken(300, 2, 1), 7263216000},
                                           {broken(8099, 11, 31), 253402214400}};
    for (const auto& [time, seconds] : rows) EXPECT_EQ(tm2sec(&time), seconds) << time.tm_year << " " << time.tm_mon;
}

TEST(CalendarSeconds, AreLocalTimeBefore1970) {
    const char* zone = getenv("TZ");
    const std::string earlier = zone != nullptr ? zone : "";
    setenv("TZ", "XYZ5", 1);  // five hours west, without summer time
    tzset();
    const tm before = broken(69, 11, 31, 23), normalised = broken(69, 12, 1), after = broken(70, 0, 1);
    EXPECT_EQ(tm2sec(&before), 4 * 3600);
    EXPECT_EQ(tm2sec(&normalised), 5 * 3600);  // mktime takes any month
    EXPECT_EQ(tm2sec(&after), 0);
    earlier.empty() ? unsetenv("TZ") : setenv("TZ", earlier.c_str(), 1);
    tzset();
}

}  // namespace
}  // namespace DataTypes
