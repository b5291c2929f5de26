// Broken-down times, against the C library's strptime and timegm where the two languages agree.
#include <time.h>

#include "datatypes/DataTypes.h"
#include "fuzz/datatypes/Comparison.h"

namespace comparison {
namespace {

const char* const kFormats[] = {
    "%Y-%m-%dT%H:%M:%S", "%H:%M:%S", "%d.%m.%y", "%Y%m%d",  "%a %d %b %Y", "%A, %B%d", "%T", "%D", "%R",
    "%d %h %y",          "%I:%M",    "%d/%m",    "%n%Y %m", "%Y%%%d",      "%U-%W"};

std::string show(const char* rest, const tm& time) {
    if (rest == nullptr) return "no match";
    char text[128];
    std::snprintf(text, sizeof text, "%d %d %d %d %d %d|%s", time.tm_year, time.tm_mon, time.tm_mday,
                  time.tm_hour, time.tm_min, time.tm_sec, rest);
    return text;
}

}  // namespace

bool compareDates(Random& random, long count) {
    Tally texts("dates with strptime"), moments("seconds with timegm");
    for (long i = 0; i < count; ++i) {
        const char* const format = kFormats[random.below(std::size(kFormats))];
        const time_t second = static_cast<time_t>(random.below(253402300800));
        tm time{};
        gmtime_r(&second, &time);
        char written[128];
        strftime(written, sizeof written, format, &time);
        // The C library skips blanks before numbers, so none are put in.
        const std::string text = random.damaged(written, "0123456789-:/TJaM%.", 2);
        tm theirs{};
        theirs.tm_year = 70;
        theirs.tm_mday = 1;
        tm ours{};
        // It also looks for the month and the day of the year when the date is whole; those fields are not
        // compared.
        const char* theirRest = ::strptime(text.c_str(), format, &theirs);
        const char* ourRest = DataTypes::strptime(text.c_str(), format, &ours);
        texts.compare(std::string(format) + " " + text, show(ourRest, ours), show(theirRest, theirs));
        if (ourRest == nullptr || ours.tm_year < 70) continue;
        tm copy = ours;
        moments.compare(text, std::to_string(DataTypes::tm2sec(&ours)), std::to_string(timegm(&copy)));
    }
    const bool same = texts.finish();
    return moments.finish() && same;
}

}  // namespace comparison
