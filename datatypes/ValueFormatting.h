// Typed values as text, the inverse of ValueParsing.h.
//
// Texts go to a caller's buffer of `outSize` bytes, cut to what fits with its NUL; a buffer of 0 bytes is not
// touched. The locale of the process plays no part; the settings (Settings.h) do.
#pragma once

#include <string>

#include "datatypes/DataValue.h"

namespace DataTypes {

// Writes a packed value, its bytes reversed with `swapBytes`, or the value that a holder has. `utcSuffix`
// appends "+00" to dates, times, timestamps and bigdatetimes. Nothing is written for a null value (or null
// bytes), for strings and binary values, and for the kinds without values.
void convertToString(const unsigned int& type, bool swapBytes, bool utcSuffix, unsigned char* packed,
                     char* out, unsigned long outSize);
void convertToString(const unsigned int& type, bool swapBytes, bool utcSuffix, DataValue& value, char* out,
                     unsigned long outSize);

// Writes a holder's float with 15 significant digits: plain from just above 1e-15 to below 1e16, else with an
// exponent. A null value is the empty text. The type and the byte order play no part.
void convertDoubleToString(const unsigned int& type, bool swapBytes, DataValue& value, char* out,
                           unsigned long outSize);

// Writes bytes as upper-case hexadecimal digits. Returns the characters written, without the NUL; -1, with
// nothing written, when they do not fit with it (and `error` says so) or when `out` is null (and `error`
// stays as it is).
int convertBinaryToHexString(unsigned long outSize, const unsigned char* data, unsigned int length, char* out,
                             const char*& error);

// Appends them to a text; returns the characters appended.
int convertBinaryToHexString(const unsigned char* data, unsigned int length, std::string& out);

}  // namespace DataTypes
