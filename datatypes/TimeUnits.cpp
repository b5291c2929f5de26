#include "datatypes/TimeUnits.h"

#include <limits>
#include <string_view>

namespace DataTypes {
namespace {

struct UnitInfo {
    TimeUnit unit;
    const char* spellings[3];  // the first is the name
    long micros;               // its length
    long max;
    int perSecond;     // units in a second, 0 from the second upward
    int seconds;       // seconds in a unit, 0 below the second
    int secondsBelow;  // counts from here on have more seconds than an int holds
};

constexpr int kNoBound = 0;  // every int is small enough

constexpr UnitInfo kUnits[] = {
    {MICROSECOND, {"MICROSECOND", "MICROSECONDS", "MICROS"}, 1, 9223372036854775807, 1000000, 0, kNoBound},
    {MILLISECOND, {"MILLISECOND", "MILLISECONDS", "MILLIS"}, 1000, 9223372036854775, 1000, 0, kNoBound},
    {SECOND, {"SECOND", "SECONDS", "SEC"}, 1000000, 9223372036854, 0, 1, kNoBound},
    {MINUTE, {"MINUTE", "MINUTES", "MIN"}, 60000000, 153722867280, 0, 60, 35791395},
    {HOUR, {"HOUR", "HOURS", "HR"}, 3600000000, 2562047788, 0, 3600, 596524},
    {DAY, {"DAY", "DAYS", "DAY"}, 86400000000, 106751991, 0, 86400, 24856},
};

consteval bool maximaFit() {
    for (const UnitInfo& row : kUnits) {
        if (row.max != std::numeric_limits<long>::max() / row.micros) return false;
    }
    return true;
}
static_assert(maximaFit());

const UnitInfo* infoOf(TimeUnit unit) {
    return unit < MICROSECOND || unit > DAY ? nullptr : &kUnits[unit - MICROSECOND];
}

}  // namespace

TimeUnit getTimeUnit(const char* name) {
    if (name == nullptr) return NO_UNIT;
    for (const UnitInfo& row : kUnits) {
        for (const char* spelling : row.spellings) {
            if (std::string_view(name) == spelling) return row.unit;
        }
    }
    return UNKNOWN_UNIT;
}

std::string getTimeUnitStr(TimeUnit unit) {
    const UnitInfo* info = infoOf(unit);
    return info == nullptr ? "UNKNOWN" : info->spellings[0];
}

int getSeconds(TimeUnit unit, int count) {
    const UnitInfo* info = infoOf(unit);
    if (info == nullptr || count < 0) return -1;
    // Less than a second is answered like an overflow: callers take -1 for "no whole seconds".
    if (info->perSecond != 0) return count < info->perSecond ? -1 : count / info->perSecond;
    return info->secondsBelow == kNoBound || count < info->secondsBelow ? count * info->seconds : -1;
}

bool getMicroSeconds(TimeUnit unit, long count, long& micros) {
    const UnitInfo* info = infoOf(unit);
    if (info == nullptr) return false;
    // The maximum binds both signs. Microseconds have no bound: the most negative long is a count of them
    // too.
    if (info->micros != 1 && (count > info->max || count < -info->max)) return false;
    micros = count * info->micros;
    return true;
}

long getTimeUnitMax(TimeUnit unit) {
    const UnitInfo* info = infoOf(unit);
    return info == nullptr ? 0 : info->max;
}

std::string getTimeUnitMaxStr(TimeUnit unit) { return std::to_string(getTimeUnitMax(unit)); }

std::string getTimeUnitMinStr(TimeUnit unit) { return std::to_string(-getTimeUnitMax(unit)); }

}  // namespace DataTypes
