// The packed form of values of fixed width, the form that a row carries. For the library's own files.
#pragma once

#include <cstddef>

#include "datatypes/DataValue.h"

namespace DataTypes::internal {

// Whether the values of a kind have the same width, all but strings and binary values; false for kinds
// without values.
bool hasFixedWidth(unsigned int kind);

// Writes the value's bytes, as many as its kind has.
void pack(const unsigned int& type, bool swapBytes, const DataValue& value, unsigned char* out);

// Reads a value of fixed width; a null pointer makes it null. Dates and times have the width of the settings.
DataValue unpack(const unsigned int& type, bool swapBytes, const unsigned char* packed);

}  // namespace DataTypes::internal
