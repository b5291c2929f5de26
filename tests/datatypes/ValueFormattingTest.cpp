// Values as text, and the bounds of the buffer.
#include "datatypes/ValueFormatting.h"

#include "tests/datatypes/Support.h"

namespace DataTypes {
namespace {

using Formatting = support::SettingsRestored;

// A decimal of a coefficient, or any type's whole number.
DataValue holding(unsigned int type, const std::string& number) {
    DataValue value;
    value.decimalValue = support::decimal(number, 34, 7);
    if (kindOf(type) != kDecimal) value.longValue = static_cast<int64_t>(value.decimalValue.low);
    value.isNull = false;
    return value;
}

std::string format(unsigned int type, DataValue value, bool utcSuffix = false) {
    char text[2048] = "untouched";
    convertToString(type, false, utcSuffix, value, text, sizeof text);
    return text;
}

TEST_F(Formatting, ListedValues) {
    for (const support::Case& row : support::readCases("formats.txt")) {
        SCOPED_TRACE(row.line);
        const unsigned int type = stringToType(row[0]), kind = kindOf(type);
        if (type == kMoney) setLegacyMoneyPrecision(row.number(3));
        DataValue value = holding(type, row[1]);
        EXPECT_EQ(format(type, value), row[2]);
        const bool temporal = kind == kDate || kind == kTime || kind == kTimestamp || kind == kBigdatetime;
        EXPECT_EQ(format(type, value, true), row[2] + (temporal ? "+00" : ""));
        value.decimalValue.shape = static_cast<uint64_t>(scaleOf(type));
        EXPECT_EQ(format(kind, value), row[2]);  // of a type without precision the value's own scale
    }
    DataValue smallest = holding(kDecimal, "1");
    smallest.decimalValue.shape = 255;
    EXPECT_EQ(format(kDecimal, smallest), "0." + std::string(254, '0') + "1");
}

// What lies between these bounds is compared with printf.
TEST_F(Formatting, FloatsAtTheirBounds) {
    for (const support::Case& row : support::readCases("floats.txt")) {
        DataValue value = holding(kFloat, "0");
        value.floatValue = std::strtod(row.pointer(1), nullptr);
        setDecimalSize(row.number(0));
        char text[64];
        convertDoubleToString(kFloat, false, value, text, sizeof text);
        EXPECT_EQ(format(kFloat, value) + " " + text, row[2] + " " + row[3]) << row.line;
    }
    DataValue value = holding(kFloat, "1");  // the least of all
    setDecimalSize(1200);
    char printed[2048];
    snprintf(printed, sizeof printed, "%.1200f", value.floatValue);
    EXPECT_EQ(format(kFloat, value), printed);
    support::GuardedBuffer plain(1100), exponent(8);
    convertToString(kFloat, false, false, value, plain.text(), 1100);
    convertDoubleToString(kFloat, false, value, exponent.text(), 8);
    EXPECT_EQ(std::string(plain.text()) + exponent.text(), std::string(printed, 1099) + "4.94065");
    DataValue null;
    convertDoubleToString(kFloat, false, null, printed, sizeof printed);
    EXPECT_STREQ(printed, "");
}

TEST_F(Formatting, ShortPackedDatesAndTimes) {
    unsigned char packed[] = {0xff, 0xff, 0xff, 0xfe, 1, 2, 3, 4};
    for (const unsigned int type : {kTime, kDate}) {
        setDateSize(type == kDate ? 4 : 8);
        g_timeSize = type == kTime ? 4 : 8;
        char text[64];
        convertToString(type, true, true, packed, text, sizeof text);
        EXPECT_STREQ(text, type == kDate ? "1969-12-31 23:59:58+00" : "23:59:58+00");
    }
    EXPECT_EQ(format(kDate, holding(kDate, "4294967296")), "2106-02-07 06:28:16");  // a holder has all 64 bits
}

TEST_F(Formatting, NullsAndKindsWithoutTextLeaveTheBuffer) {
    for (unsigned int type = 0; type < 256; ++type) {
        unsigned char packed[32] = {};
        support::GuardedBuffer null(16), buffer(16);
        convertToString(type, false, true, static_cast<unsigned char*>(nullptr), null.text(), 16);
        convertToString(type, false, true, packed, buffer.text(), 16);
        const bool leaves = type >= kKinds || g_column_lengths[type] == 0;
        EXPECT_TRUE(null.untouched() && buffer.untouched() == leaves) << type;
        EXPECT_TRUE(format(type, {}) == "untouched" && (format(type, holding(type, "0")) == "untouched") == leaves) << type;
    }
}

TEST(HexFormatting, BytesAndBounds) {
    const unsigned char bytes[] = {0x0a, 0xff, 0x00, 0x90};
    std::string text = "x";
    EXPECT_TRUE(convertBinaryToHexString(bytes, 4, text) == 8 && text == "x0AFF0090") << text;
    const char* error = "";
    support::GuardedBuffer enough(9), narrow(8);
    EXPECT_EQ(convertBinaryToHexString(9, bytes, 4, nullptr, error), -1);
    EXPECT_EQ(convertBinaryToHexString(9, bytes, 4, enough.text(), error), 8);
    EXPECT_EQ(enough.text() + std::string(error), "0AFF0090");
    EXPECT_EQ(convertBinaryToHexString(8, bytes, 4, narrow.text(), error), -1);
    EXPECT_STREQ(error, "output buffer is too small for binary to hex-string conversion");
    EXPECT_TRUE(narrow.untouched());
}

}  // namespace
}  // namespace DataTypes
