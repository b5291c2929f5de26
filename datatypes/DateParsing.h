// Dates and times read against a format in the conversion language of the C library's strptime.
//
// The library has its own parser so that what it accepts depends neither on the platform nor on the locale:
// names are English, in any case. Stateless but for tm2sec's use of the local time zone before 1970.
#pragma once

#include <cstdint>
#include <ctime>

namespace DataTypes {

// Reads `text` by `format` into `result`; returns the first character not read, or null when the text does
// not match. Fields that the format does not name are those of 1970-01-01 00:00:00. After a failure `result`
// is partly filled.
//
// Conversions: %% %A %a %B %b %C %c %D %d %e %H %h %I %j %k %l %M %m %n %p %R %r %S %T %t %U %W %w %X %x %Y
// %y; E may stand before C c X x Y y, and O before d e H I M m S U W w y. White space in the format matches
// any run of it, even none.
const char* strptime(const char* text, const char* format, tm* result);

// Returns the seconds since 1970-01-01 00:00:00 of a broken-down UTC time whose fields are taken as they are;
// -1 for a month that is none and for a negative result. Years before 1970 go through mktime, in the process'
// local time zone.
int64_t tm2sec(const tm* time);

}  // namespace DataTypes
