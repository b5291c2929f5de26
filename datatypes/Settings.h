// Process-wide settings of the library.
//
// They are meant to be set once, at start-up, through the functions below, and are then read without locks;
// setting one while another thread parses or formats is not supported.
#pragma once

#include <cstddef>

namespace DataTypes {

inline constexpr char kDefaultDateFormat[] = "%Y-%m-%dT%H:%M:%S";  // of timestamps too
inline constexpr char kDefaultTimeFormat[] = "%H:%M:%S";
// Not of strptime: a count of seconds since 1970-01-01 UTC, whatever follows the digits. Nothing stands
// beside it.
inline constexpr char kSecondsFormat[] = "%s";

extern size_t g_legacyMoneyPrecision;  // places of plain money; 4
extern long g_legacyMoneyFactor;       // 10 to that power; 10000
extern size_t g_decimalSize;           // digits after the point of a float written as text; 6
extern double g_tolerance;             // floats of a smaller magnitude are written as zero; 1e-06
extern size_t g_dateSize;              // bytes of a packed date when it is formatted, 4 or 8; 8
extern size_t g_timeSize;              // the same of a packed time; 8
extern const char* g_date_format;      // default date format; kDefaultDateFormat
extern const char* g_time_format;      // default time format; kDefaultTimeFormat
extern bool g_date_format_allocated;   // g_date_format is a heap copy that the library frees

// Sets the places of plain money and their factor; 19 places or more are ignored.
void setLegacyMoneyPrecision(size_t places);

// Sets the digits after the point of floats, and the tolerance to 10 to the minus that power.
void setDecimalSize(size_t digits);
size_t getDecimalSize();

// Takes 4 and 8; any other width is ignored.
void setDateSize(size_t bytes);

// Stores a copy of the default date format; a null pointer is ignored. Pointers to the earlier copy become
// invalid.
void setDateFormat(char* format);

}  // namespace DataTypes
