// Names, classes and widths of type codes; settings; time units.
#include "tests/datatypes/Support.h"

namespace DataTypes {
namespace {

TEST(TypeCodes, EveryKindHasItsNamesWidthAndClasses) {
    for (const support::Case& row : support::readCases("kinds.txt")) {
        SCOPED_TRACE(row.where);
        const auto kind = static_cast<unsigned int>(row.number(0));
        EXPECT_EQ(typeToString(kind), row[1]);
        EXPECT_EQ(typeToStringUpper(kind), row[2]);
        EXPECT_EQ(typeToLegacyString(kind), row[3]);
        EXPECT_EQ(typeToLegacyStringUpper(kind), row[4]);
        EXPECT_EQ(typeToTypeConstString(kind), row[5]);
        EXPECT_EQ(kind < kKinds ? g_column_lengths[kind] : 0u, row.number(6));
        EXPECT_EQ(getAlignment(kind), row.number(7));
        EXPECT_EQ(getAlignmentMask(kind), row.number(7) - 1);
        const std::string classes =
            std::string(numericType(kind) ? "n" : "") + (integerType(kind) ? "i" : "") + (genericDateType(kind) ? "d" : "");
        EXPECT_EQ(classes, row[8]);
        unsigned int holder = kind;
        maximizeTypeToFixedDecimal(holder);
        EXPECT_EQ(typeToString(holder), row[9]);
        const bool named = row[1] != "N/A";
        EXPECT_EQ(stringToType(row[1]), named ? kind : kUntyped);
        EXPECT_EQ(stringToType(row[3]), named ? kind : kUntyped);
    }
}

TEST(TypeCodes, DecimalNamesCoverAllPairsAndNothingElse) {
    for (int precision = 0; precision <= 34; ++precision) {
        for (int scale = 0; scale <= 34; ++scale) {
            const unsigned int code = createFixedDecimal(precision, scale);
            const std::string numbers = "(" + std::to_string(precision) + "," + std::to_string(scale) + ")";
            const bool real = scale <= precision;
            EXPECT_EQ(typeToString(code), real ? "decimal" + numbers : "");
            EXPECT_EQ(typeToLegacyStringUpper(code), real ? "DECIMAL" + numbers : std::string());
            EXPECT_EQ(decimalUpper[static_cast<size_t>(precision * 35 + scale)], std::string(typeToStringUpper(code)));
            EXPECT_EQ(stringToType("decimal" + numbers), code);
        }
    }
    EXPECT_EQ(typeToString(createFixedDecimal(35, 0)), "");
    EXPECT_STREQ(typeToStringUpper(createFixedDecimal(40, 35)), "");
}

TEST(TypeCodes, FromOtherNames) {
    for (const support::Case& row : support::readCases("names.txt")) {
        unsigned int code = kUntyped;
        if (row.fields.size() == 3) code = createFixedDecimal(row.number(1), row.number(2));
        EXPECT_EQ(stringToType(row[0]), code) << row.where;
    }
}

using Settings = support::SettingsRestored;

TEST_F(Settings, RefuseWhatIsOutOfRange) {
    setLegacyMoneyPrecision(18);
    setLegacyMoneyPrecision(19);
    EXPECT_EQ(g_legacyMoneyPrecision, 18u);
    EXPECT_EQ(g_legacyMoneyFactor, 1000000000000000000);
    setLegacyMoneyPrecision(0);
    EXPECT_EQ(g_legacyMoneyFactor, 1);
    setDateSize(4);
    for (const size_t refused : {0u, 2u, 5u, 16u}) setDateSize(refused);
    EXPECT_EQ(g_dateSize, 4u);
    for (const auto& [digits, tolerance] : {std::pair<size_t, double>{0, 1}, {1, 0.1}, {5, 1e-5}, {23, 1e-23}, {400, 0}}) {
        setDecimalSize(digits);
        EXPECT_EQ(getDecimalSize(), digits);
        EXPECT_EQ(g_tolerance, tolerance);
    }
}

TEST_F(Settings, DateFormatIsCopied) {
    char first[] = "%Y";
    setDateFormat(first);
    first[1] = 'm';
    setDateFormat(const_cast<char*>(g_date_format));
    setDateFormat(nullptr);
    EXPECT_STREQ(g_date_format, "%Y");
    EXPECT_TRUE(g_date_format_allocated);
}

TEST(TimeUnits, NamesMaximaAndSeconds) {
    const long length[] = {1, 1000, 1000000, 60000000, 3600000000, 86400000000};
    for (const support::Case& row : support::readCases("units.txt")) {
        SCOPED_TRACE(row.where);
        const auto unit = static_cast<TimeUnit>(row.number(0));
        for (const size_t name : {1u, 2u, 3u}) EXPECT_EQ(getTimeUnit(row[name].c_str()), unit);
        EXPECT_EQ(getTimeUnitStr(unit), row[1]);
        EXPECT_EQ(getTimeUnitMaxStr(unit), row[4]);
        EXPECT_EQ(getTimeUnitMinStr(unit), "-" + row[4]);
        for (size_t i = 5; i < row.fields.size(); i += 2) EXPECT_EQ(getSeconds(unit, row.number(i)), row.number(i + 1));

        const long max = getTimeUnitMax(unit);
        long micros = 0;
        for (const long count : {max, -max, 3l}) {
            EXPECT_TRUE(getMicroSeconds(unit, count, micros));
            EXPECT_EQ(micros, count * length[unit - 2]);
        }
        if (unit == MICROSECOND) continue;
        for (const long count : {max + 1, -max - 1, INT64_MIN}) EXPECT_FALSE(getMicroSeconds(unit, count, micros));
        EXPECT_EQ(micros, 3 * length[unit - 2]);
    }
    long micros = 7;
    EXPECT_TRUE(getMicroSeconds(MICROSECOND, INT64_MIN, micros));
    EXPECT_EQ(micros, INT64_MIN);
    for (const int other : {-1, 0, 1, 8}) {
        const auto unit = static_cast<TimeUnit>(other);
        EXPECT_EQ(getTimeUnitStr(unit) + getTimeUnitMaxStr(unit) + getTimeUnitMinStr(unit), "UNKNOWN00");
        EXPECT_EQ(getSeconds(unit, 5000000), -1);
        EXPECT_FALSE(getMicroSeconds(unit, 1, micros));
    }
    EXPECT_EQ(getTimeUnit(nullptr), 0);
    for (const char* name : {"", "second", "DAYZ", "UNKNOWN"}) EXPECT_EQ(getTimeUnit(name), 1) << name;
}

}  // namespace
}  // namespace DataTypes
