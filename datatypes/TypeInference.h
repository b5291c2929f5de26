// The type that a text could be a value of, and that of a column by the texts of its samples.
#pragma once

#include "datatypes/TypeCodes.h"

namespace DataTypes {

// In the order in which they are tried; what none of them reads is a string.
inline constexpr unsigned int kInferredTypes[] = {kInteger, kLong, kFloat, kDate, kTimestamp, kTime};

// Tells whether one of these types reads the whole text by its rules. Null formats stand for the defaults.
bool readsAs(unsigned int type, const char* text, const char* dateFormat, const char* timestampFormat,
             const char* timeFormat);

// Returns the first of kInferredTypes that reads the text, else kString.
unsigned int inferType(const char* text, const char* dateFormat, const char* timestampFormat,
                       const char* timeFormat);

// No type code: a column without a value so far.
inline constexpr unsigned int kNotInferred = ~0U;

// Widens the column's type over one more value's.
void widenColumn(unsigned int& column, unsigned int value);

}  // namespace DataTypes
