#include "datatypes/TypeCodes.h"

#include <cstdint>
#include <string_view>

#include "datatypes/NumberReading.h"

namespace DataTypes {
namespace {

struct TypeInfo {
    unsigned int kind;
    const char* lower;
    const char* upper;
    const char* legacyLower;
    const char* legacyUpper;
    const char* typeConst;
    unsigned int width;
};

constexpr TypeInfo kTypeInfo[] = {
    {kInt16, "int16", "INT16", "int16", "INT16", "&intConst", 2},
    {kInteger, "integer", "INTEGER", "int32", "INT32", "&intConst", 4},
    {kLong, "long", "LONG", "int64", "INT64", "&intConst", 8},
    {kFloat, "float", "FLOAT", "double", "DOUBLE", "&floatConst", 8},
    {kDate, "date", "DATE", "date", "DATE", "&dateConst", 8},
    {kString, "string", "STRING", "string", "STRING", "&stringConst", 0},
    {kUntyped, "N/A", "UNKNOWN", "N/A", "UNKNOWN", "N/A", 0},
    {kMoney, "money", "MONEY", "money", "MONEY", "&moneyConst", 8},
    {kTimestamp, "timestamp", "TIMESTAMP", "timestamp", "TIMESTAMP", "&timestampConst", 8},
    {kReserved, "N/A", "UNKNOWN", "N/A", "UNKNOWN", "N/A", 0},
    {kBoolean, "boolean", "BOOLEAN", "boolean", "BOOLEAN", "&boolConst", 1},
    {kMoney1, "money(1)", "MONEY(1)", "money(1)", "MONEY(1)", "&moneyConst", 8},
    {12, "money(2)", "MONEY(2)", "money(2)", "MONEY(2)", "&moneyConst", 8},
    {13, "money(3)", "MONEY(3)", "money(3)", "MONEY(3)", "&moneyConst", 8},
    {14, "money(4)", "MONEY(4)", "money(4)", "MONEY(4)", "&moneyConst", 8},
    {15, "money(5)", "MONEY(5)", "money(5)", "MONEY(5)", "&moneyConst", 8},
    {16, "money(6)", "MONEY(6)", "money(6)", "MONEY(6)", "&moneyConst", 8},
    {17, "money(7)", "MONEY(7)", "money(7)", "MONEY(7)", "&moneyConst", 8},
    {18, "money(8)", "MONEY(8)", "money(8)", "MONEY(8)", "&moneyConst", 8},
    {19, "money(9)", "MONEY(9)", "money(9)", "MONEY(9)", "&moneyConst", 8},
    {20, "money(10)", "MONEY(10)", "money(10)", "MONEY(10)", "&moneyConst", 8},
    {21, "money(11)", "MONEY(11)", "money(11)", "MONEY(11)", "&moneyConst", 8},
    {22, "money(12)", "MONEY(12)", "money(12)", "MONEY(12)", "&moneyConst", 8},
    {23, "money(13)", "MONEY(13)", "money(13)", "MONEY(13)", "&moneyConst", 8},
    {24, "money(14)", "MONEY(14)", "money(14)", "MONEY(14)", "&moneyConst", 8},
    {kMoney15, "money(15)", "MONEY(15)", "money(15)", "MONEY(15)", "&moneyConst", 8},
    {kInterval, "interval", "INTERVAL", "interval", "INTERVAL", "&intervalConst", 8},
    {kBigdatetime, "bigdatetime", "BIGDATETIME", "bigdatetime", "BIGDATETIME", "&bigdatetimeConst", 8},
    {kBinary, "binary", "BINARY", "binary", "BINARY", "&binaryConst", 0},
    {kTime, "time", "TIME", "time", "TIME", "&timeConst", 8},
    {kDecimal, "decimal", "DECIMAL", "decimal", "DECIMAL", "&fixeddecimalConst", 24},
};

consteval bool rowNumbersAreKinds() {
    for (unsigned int row = 0; row < std::size(kTypeInfo); ++row) {
        if (kTypeInfo[row].kind != row) return false;
    }
    return std::size(kTypeInfo) == kKinds;
}
static_assert(rowNumbersAreKinds());

const TypeInfo& infoOf(const unsigned int& code) {
    const unsigned int kind = kindOf(code);
    return kTypeInfo[kind < kKinds ? kind : kUntyped];
}

// A decimal's name from one of the two tables, any other kind's from its row.
const char* nameOf(const unsigned int& code, const char* TypeInfo::*column,
                   const std::array<const char*, kDecimalNames * kDecimalNames>& decimals) {
    if (kindOf(code) != kDecimal) return infoOf(code).*column;
    if (precisionOf(code) > kMaxDecimalPrecision || scaleOf(code) > kMaxDecimalPrecision) return "";
    return decimals[static_cast<size_t>(precisionOf(code)) * kDecimalNames +
                    static_cast<size_t>(scaleOf(code))];
}

// The number that strtol reads at the start of the text between two positions; 0 where there is no such text.
int numberBetween(const std::string& name, size_t from, size_t to) {
    if (from == std::string::npos || to == std::string::npos || to < from + 1) return 0;
    return static_cast<int>(internal::scanLong(name.substr(from + 1, to - from - 1).c_str()).value);
}

}  // namespace

constinit const std::array<unsigned int, kKinds> g_column_lengths = [] {
    std::array<unsigned int, kKinds> widths{};
    for (const TypeInfo& row : kTypeInfo) widths[row.kind] = row.width;
    return widths;
}();

std::string typeToString(const unsigned int& code) { return nameOf(code, &TypeInfo::lower, decimalLower); }

const char* typeToStringUpper(const unsigned int& code) {
    return nameOf(code, &TypeInfo::upper, decimalUpper);
}

std::string typeToLegacyString(const unsigned int& code) {
    return nameOf(code, &TypeInfo::legacyLower, decimalLower);
}

const char* typeToLegacyStringUpper(const unsigned int& code) {
    return nameOf(code, &TypeInfo::legacyUpper, decimalUpper);
}

std::string typeToTypeConstString(const unsigned int& code) { return infoOf(code).typeConst; }

unsigned int stringToType(const std::string& name) {
    for (const TypeInfo& row : kTypeInfo) {
        if (row.width == 0 && row.kind != kString && row.kind != kBinary) continue;  // has no name
        if (row.kind != kDecimal && (name == row.lower || name == row.legacyLower)) return row.kind;
    }
    if (name.find("decimal") == std::string::npos) return kUntyped;
    const size_t open = name.find('(');
    const size_t comma = name.find(',');
    return createFixedDecimal(numberBetween(name, open, comma), numberBetween(name, comma, name.find(')')));
}

unsigned int createFixedDecimal(int precision, int scale) {
    return kDecimal + ((static_cast<unsigned int>(scale) & 0x3f) << 8) +
           ((static_cast<unsigned int>(precision) & 0x3fff) << 14);
}

unsigned int getAlignment(const unsigned int& code) {
    const unsigned int width = infoOf(code).width;
    return width == 0 ? 1 : width;
}

unsigned int getAlignmentMask(const unsigned int& code) { return getAlignment(code) - 1; }

bool numericType(const unsigned int& code) {
    const unsigned int kind = kindOf(code);
    return kind < kKinds && kind != kString && kind != kReserved && kind != kBinary;
}

bool integerType(const unsigned int& code) {
    const unsigned int kind = kindOf(code);
    return kind == kInt16 || kind == kInteger || kind == kLong || kind == kUntyped || kind == kBoolean;
}

bool genericDateType(const unsigned int& code) {
    const unsigned int kind = kindOf(code);
    return kind == kDate || kind == kUntyped || kind == kBigdatetime;
}

}  // namespace DataTypes
