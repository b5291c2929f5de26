// Names, classes and widths of type codes; what types combine to; settings; time units.
#include "tests/datatypes/Support.h"

namespace DataTypes {
namespace {

TEST(TypeCodes, EveryKindHasItsNamesWidthAndClasses) {
    for (const support::Case& row : support::readCases("kinds.txt")) {
        const auto kind = static_cast<unsigned int>(row.number(0));
        unsigned int holder = kind == kDecimal ? createFixedDecimal(10, 2) : kind;
        maximizeTypeToFixedDecimal(holder);
        std::ostringstream line;
        line << kind << ' ' << typeToString(kind) << ' ' << typeToStringUpper(kind) << ' ' << typeToLegacyString(kind) << ' '
             << typeToLegacyStringUpper(kind) << ' ' << typeToTypeConstString(kind) << ' ' << getAlignment(kind) << ' '
             << getAlignmentMask(kind) << ' ' << numericType(kind) << integerType(kind) << genericDateType(kind) << ' '
             << typeToString(holder);
        EXPECT_EQ(line.str(), row.line);
        for (const size_t name : {1u, 3u}) EXPECT_EQ(stringToType(row[name]), row[name] == "N/A" ? kUntyped : kind) << row.line;
    }
}

TEST(TypeCodes, DecimalNamesCoverAllPairsAndNothingElse) {
    for (int precision = 0; precision <= 64; ++precision) {
        for (int scale = 0; scale <= 35; ++scale) {
            const unsigned int code = createFixedDecimal(precision, scale);
            const std::string numbers = "(" + std::to_string(precision) + "," + std::to_string(scale) + ")";
            const bool named = scale <= precision && precision <= 34;
            EXPECT_EQ(typeToString(code) + typeToLegacyStringUpper(code), named ? "decimal" + numbers + "DECIMAL" + numbers : "");
            EXPECT_EQ(stringToType("decimal" + numbers), code);
        }
    }
}

TEST(TypeCodes, FromOtherNames) {
    for (const support::Case& row : support::readCases("names.txt"))
        EXPECT_EQ(stringToType(row[0]), row.fields.size() == 1 ? kUntyped : createFixedDecimal(row.number(1), row.number(2))) << row.line;
}

using Settings = support::SettingsRestored;

TEST_F(Settings, HaveDefaultsRefuseWhatIsOutOfRangeAndCopyTheFormat) {
    EXPECT_TRUE(g_legacyMoneyFactor == 10000 && getDecimalSize() == 6 && g_tolerance == 1e-6 && g_dateSize == 8 && g_timeSize == 8);
    for (const size_t places : {18u, 19u}) setLegacyMoneyPrecision(places);
    EXPECT_TRUE(g_legacyMoneyPrecision == 18 && g_legacyMoneyFactor == 1000000000000000000);
    for (const size_t bytes : {4u, 0u, 2u, 5u, 16u}) setDateSize(bytes);
    EXPECT_EQ(g_dateSize, 4u);
    for (const auto& [digits, tolerance] : {std::pair<size_t, double>{0, 1}, {5, 1e-5}, {23, 1e-23}, {400, 0}}) {
        setDecimalSize(digits);
        EXPECT_TRUE(getDecimalSize() == digits && g_tolerance == tolerance) << digits;
    }
    char format[] = "%Y";
    setDateFormat(format);
    format[1] = 'm';
    for (char* unchanged : {const_cast<char*>(g_date_format), static_cast<char*>(nullptr)}) setDateFormat(unchanged);
    EXPECT_TRUE(g_date_format == std::string("%Y") && g_date_format_allocated);
}

TEST_F(Settings, WideningOfEveryPairOfKinds) {
    const std::vector<support::Case> rows = support::readCases("widening.txt");
    ASSERT_EQ(rows.size(), kKinds);
    for (unsigned int target = 0; target < kKinds; ++target) {
        for (unsigned int other = 0; other < kKinds; ++other) {
            SCOPED_TRACE("target " + rows[target][0] + ", other " + rows[other][0]);
            unsigned int any = target, strict = target;
            maximizeAnyType(any, other);
            EXPECT_EQ(rows[kindOf(any)][0][0], rows[target][1].at(other));
            const bool possible = maximizeType(strict, other);
            EXPECT_EQ(possible ? rows[kindOf(strict)][0][0] : strict == target ? '.' : '!', rows[target][2].at(other));
        }
    }
}

TEST_F(Settings, WideningOfDecimalsAndLegacyMoney) {
    for (const support::Case& row : support::readCases("combined.txt")) {
        setLegacyMoneyPrecision(row.number(0));
        const unsigned int other = stringToType(row[2]);
        unsigned int any = stringToType(row[1]), strict = any;
        maximizeAnyType(any, other);
        EXPECT_EQ(typeToString(any), row[3]) << row.line;
        EXPECT_EQ(maximizeType(strict, other) ? typeToString(strict) : "-", row[4]) << row.line;
    }
}

TEST(TimeUnits, NamesMaximaAndLengths) {
    long micros = 0;
    for (const support::Case& row : support::readCases("units.txt")) {
        SCOPED_TRACE(row.line);
        const auto unit = static_cast<TimeUnit>(row.number(0));
        for (const size_t name : {1u, 2u, 3u}) EXPECT_EQ(getTimeUnit(row.pointer(name)), unit);
        EXPECT_EQ(getTimeUnitStr(unit) + getTimeUnitMinStr(unit) + getTimeUnitMaxStr(unit), row[1] + "-" + row[4] + row[4]);
        for (size_t i = 6; i < row.fields.size(); i += 2) EXPECT_EQ(getSeconds(unit, row.number(i)), row.number(i + 1));
        const long max = getTimeUnitMax(unit);
        for (const long count : {max, -max, 3l, static_cast<long>(max + 1ul), -max - 1, INT64_MIN}) {
            micros = 7;
            const bool allowed = unit == MICROSECOND || (-max <= count && count <= max);
            EXPECT_EQ(getMicroSeconds(unit, count, micros), allowed) << count;
            EXPECT_EQ(micros, allowed ? count * std::stol(row[5]) : 7) << count;
        }
    }
    for (const TimeUnit unit : {NO_UNIT, UNKNOWN_UNIT, TimeUnit{-1}, TimeUnit{8}}) {
        EXPECT_EQ(getTimeUnitStr(unit) + getTimeUnitMaxStr(unit) + getTimeUnitMinStr(unit), "UNKNOWN00");
        EXPECT_TRUE(getSeconds(unit, 5000000) == -1 && !getMicroSeconds(unit, 1, micros));
    }
    EXPECT_EQ(getTimeUnit(nullptr), NO_UNIT);
    for (const char* name : {"", "second", "DAYZ", "UNKNOWN"}) EXPECT_EQ(getTimeUnit(name), UNKNOWN_UNIT) << name;
}

}  // namespace
}  // namespace DataTypes
