// Units of interval quantities. Stateless.
#pragma once

#include <string>

namespace DataTypes {

enum TimeUnit : int {
    NO_UNIT = 0,       // of a null name
    UNKNOWN_UNIT = 1,  // of a name that is no unit's
    MICROSECOND = 2,
    MILLISECOND = 3,
    SECOND = 4,
    MINUTE = 5,
    HOUR = 6,
    DAY = 7,
};

// Returns the unit of an upper-case name: singular, plural, or short ("MICROS", "MILLIS", "SEC", "MIN",
// "HR").
TimeUnit getTimeUnit(const char* name);

// Returns the name, "MICROSECOND" to "DAY"; "UNKNOWN" for anything else.
std::string getTimeUnitStr(TimeUnit unit);

// Returns the whole seconds in `count` units; -1 for a negative count, for no unit, for less than one second
// in the two units below it, and for more than an int holds.
int getSeconds(TimeUnit unit, int count);

// Sets the microseconds in `count` units of either sign; false, with `micros` untouched, for no unit and for
// a magnitude above the unit's maximum.
bool getMicroSeconds(TimeUnit unit, long count, long& micros);

// These return the largest count of the unit whose length in microseconds a long holds, 0 for no unit; the
// same and its negation as text.
long getTimeUnitMax(TimeUnit unit);
std::string getTimeUnitMaxStr(TimeUnit unit);
std::string getTimeUnitMinStr(TimeUnit unit);

}  // namespace DataTypes
