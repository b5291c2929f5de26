// Codes and names of the server's column types, and everything that depends on the code alone.
//
// A type code is an unsigned 32-bit number whose low 8 bits are the kind. Only fixed decimals use the upper
// bits: scale in bits 8-13, precision in bits 14-27. All functions are free of state and may run on any
// thread.
#pragma once

#include <array>
#include <cstddef>
#include <string>

namespace DataTypes {

enum TypeEnum : unsigned int {
    kInt16 = 0,
    kInteger = 1,
    kLong = 2,
    kFloat = 3,
    kDate = 4,
    kString = 5,
    kUntyped = 6,  // a type not yet known
    kMoney = 7,    // with the legacy money precision's places
    kTimestamp = 8,
    kReserved = 9,  // has no name and combines with nothing
    kBoolean = 10,
    kMoney1 = 11,  // kMoney1 - 1 + n is money(n), n from 1 to 15
    kMoney15 = 25,
    kInterval = 26,
    kBigdatetime = 27,
    kBinary = 28,
    kTime = 29,
    kDecimal = 30,
};

inline constexpr unsigned int kKinds = 31;
inline constexpr int kMaxDecimalPrecision = 34;
inline constexpr size_t kDecimalNames = 35;  // scales and precisions with a name: 0 to 34

constexpr unsigned int kindOf(const unsigned int& code) { return code & 0xff; }
constexpr int scaleOf(const unsigned int& code) { return static_cast<int>((code >> 8) & 0x3f); }
constexpr int precisionOf(const unsigned int& code) { return static_cast<int>((code >> 14) & 0x3fff); }
constexpr bool isNumberedMoney(unsigned int kind) { return kMoney1 <= kind && kind <= kMoney15; }
constexpr int numberedMoneyPlaces(unsigned int kind) { return static_cast<int>(kind - kMoney1) + 1; }

// Width in bytes of a packed value by kind; 0 where it varies and for the kinds without values.
extern const std::array<unsigned int, kKinds> g_column_lengths;

// Names of the decimal types at precision * 35 + scale, "decimal(10,2)" and "DECIMAL(10,2)"; empty where the
// scale exceeds the precision.
extern const std::array<const char*, kDecimalNames * kDecimalNames> decimalLower;
extern const std::array<const char*, kDecimalNames * kDecimalNames> decimalUpper;

// These return the names of a type. Kinds without one are "N/A", "UNKNOWN" in upper case; a decimal whose
// scale exceeds its precision, or with either above 34, is "". The legacy spellings differ for integer, long
// and float only: "int32", "int64", "double". Pointers are to static texts.
std::string typeToString(const unsigned int& code);
const char* typeToStringUpper(const unsigned int& code);
std::string typeToLegacyString(const unsigned int& code);
const char* typeToLegacyStringUpper(const unsigned int& code);
std::string typeToTypeConstString(const unsigned int& code);  // "&intConst" and the like

// Returns the code of a lower-case name, ordinary or legacy; kUntyped for a name not known. Any other name
// that contains "decimal" is a decimal code: the numbers between "(", "," and ")" are its precision and
// scale, unchecked, 0 for what cannot be read.
unsigned int stringToType(const std::string& name);

// Makes a decimal code; the scale is cut to 6 bits and the precision to 14.
unsigned int createFixedDecimal(int precision, int scale);

// The alignment is the packed width, 1 where that is 0. A decimal's is 24 and its mask 23: no power of two,
// and kept so.
unsigned int getAlignment(const unsigned int& code);
unsigned int getAlignmentMask(const unsigned int& code);

// These tell the classes of kinds; the untyped kind is in all three, kinds above 30 in none.
bool numericType(const unsigned int& code);      // all with values but string and binary
bool integerType(const unsigned int& code);      // int16, integer, long, boolean
bool genericDateType(const unsigned int& code);  // date and bigdatetime, but neither timestamp nor time

}  // namespace DataTypes
