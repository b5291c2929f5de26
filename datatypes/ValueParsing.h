// Field texts to typed values.
//
// What each kind takes; any other text fails:
// - int16, integer, long, interval: a sign or none, digits, nothing else.
// - float: a number as strtod reads one that begins with a sign, a digit or a point, such as "-1.5e3", "0x10"
//   and "-inf".
// - boolean: t true y yes on 1, f false n no off 0, in either case; blanks before and, but for a single
//   letter, behind.
// - money: a number without an exponent. Digits beyond the places are dropped, and what follows them is not
//   looked at.
// - decimal: as FixedDecimalValue::setDecimalValue.
// - date, time: what the format reads.
// - timestamp, bigdatetime: what the format reads up to the last point; behind that three (six) digits, of
//   which missing ones are 0.
// - string: every text.
// - binary: hexadecimal digits in pairs, in either case, with one blank at most.
//
// The kinds without values take nothing.
//
// Texts are NUL-terminated; a null text counts as the empty one, except that it cannot be split. Every
// failure sets `error` to a static English message and leaves everything else as it was, unless a comment
// says otherwise; after a success `error` is as it was before. Formats are strptime's (DateParsing.h) or
// "%s", a count of seconds since 1970; a null date or time format is the default of Settings.h, a null
// timestamp format is the date format, a null bigdatetime format the timestamp format. Texts may go on after
// what a date or time format has read. The locale of the process plays no part.
#pragma once

#include <cstddef>
#include <cstdint>

#include "datatypes/DataValue.h"

namespace DataTypes {

// Writes the value in its packed form: numbers in the machine's byte order, or reversed with `swapBytes` (of
// a decimal's three words the first two, and the first two bytes of the third); a string with its NUL; a
// binary value after its 32-bit length, most significant byte first. Returns the bytes written, 4294967295 on
// failure. When `out` is too small that is the error, whatever the text.
unsigned int convertFromStringAndPack(const unsigned int& type, bool swapBytes, const char* text,
                                      unsigned char* out, unsigned long outSize, const char*& error,
                                      const char* dateFormat, const char* timestampFormat,
                                      const char* bigdatetimeFormat, const char* timeFormat);

// Sets `value` and clears its null flag. A string or binary value takes the place of the one that a holder
// which is not null has, and that is freed; a hex text that cannot be converted leaves the holder null.
bool convertFromString(const unsigned int& type, const char* text, DataValue& value, const char*& error,
                       const char* dateFormat, const char* timestampFormat, const char* bigdatetimeFormat,
                       const char* timeFormat);

// Writes the bytes of a text of hexadecimal digit pairs in either case, with blanks anywhere; returns their
// count, -1 on failure.
int convertBinaryFromHexString(const char* hex, unsigned char* out, unsigned int outSize, const char*& error);

// Returns half the length of the text, blanks included; 0 for a null pointer.
unsigned int getBinaryDataSizeFromHexString(const char* hex);

// Returns the length that a packed binary value begins with; 0 for a null pointer.
unsigned int getLengthFromPackedBinary(const unsigned char* packed);

// Splits at the last point into the text before it and the first three (six) characters after it that are no
// spaces, filled up with zeros. Both parts are blocks of malloc's for the caller to free. False, with the
// parts untouched, for a null text or when memory is short.
bool splitTimestamp(const char* text, char*& datetimePart, char*& fractionPart);
bool splitBigdatetime(const char* text, char*& datetimePart, char*& fractionPart);

}  // namespace DataTypes
