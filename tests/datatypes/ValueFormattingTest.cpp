// Values as text, against what printf gives and at the bounds of the buffer.
#include "datatypes/ValueFormatting.h"

#include <bit>
#include <cmath>
#include <limits>

#include "tests/datatypes/Support.h"

namespace DataTypes {
namespace {

using Formatting = support::SettingsRestored;

DataValue holding(__int128_t number) {  // a decimal, or with its lower half at the beginning any whole number
    DataValue value;
    value.decimalValue = {static_cast<uint64_t>(number), static_cast<uint64_t>(number >> 64), 0};
    value.isNull = false;
    return value;
}

DataValue holdingFloat(double number) { return holding(std::bit_cast<int64_t>(number)); }

std::string format(unsigned int type, DataValue value, bool utcSuffix = false) {
    char text[2048] = "untouched";
    convertToString(type, false, utcSuffix, value, text, sizeof text);
    return text;
}

TEST_F(Formatting, ListedValues) {
    for (const support::Case& row : support::readCases("formats.txt")) {
        const unsigned int type = stringToType(row[0]);
        const unsigned int kind = kindOf(type);
        DataValue value = holding(support::toNumber(row[1]));
        if (kind == kDecimal) std::swap(value.decimalValue.high, value.decimalValue.low);
        EXPECT_EQ(format(type, value), row[2]) << row.where;
        const bool temporal = kind == kDate || kind == kTime || kind == kTimestamp || kind == kBigdatetime;
        EXPECT_EQ(format(type, value, true), row[2] + (temporal ? "+00" : "")) << row.where;
        if (kind != kDecimal) continue;
        value.decimalValue.shape = static_cast<uint64_t>(scaleOf(type));
        EXPECT_EQ(format(kDecimal, value), row[2]) << row.where << " with the value's own scale";
    }
    DataValue smallest = holding(1);
    smallest.decimalValue = support::decimal(1, 34, 255);
    EXPECT_EQ(format(kDecimal, smallest), "0." + std::string(254, '0') + "1");
    setLegacyMoneyPrecision(0);
    EXPECT_EQ(format(kMoney, holding(5)), "5.0");
    EXPECT_EQ(format(kMoney, holding(INT64_MIN)), "-9223372036854775808.0");
    setLegacyMoneyPrecision(18);
    EXPECT_EQ(format(kMoney, holding(INT64_MIN)), "-9.223372036854775808");
}

std::string printed(const char* form, int digits, double number) {
    char text[2048];
    snprintf(text, sizeof text, form, digits, number);
    return text;
}

// clang-format off
const double kFloats[] = {
    0.0, -0.0, 1.5, -1.5, 0.5, 2.5, 1e-7, 1e-6, -1e-6, 9.9999995, 999999.9999995, 0.0000005, 1.0000005, 4503599627370495.5,
    9007199254740993.0, 1e80, -1e80, 0.1, 0.0078125, 5e-324, 2.2250738585072014e-308, 1e15, 999999999999999.9, 1e16, 1e-15, 1, 10, 3e-39};
// clang-format on

TEST_F(Formatting, FloatsAsPrintfDoes) {
    for (const size_t digits : {6u, 0u, 1u, 2u, 8u, 18u, 19u, 40u, 1200u}) {
        setDecimalSize(digits);
        for (const double number : kFloats) {
            const double taken = std::fabs(number) < g_tolerance ? 0.0 : number;
            EXPECT_EQ(format(kFloat, holdingFloat(number)), printed("%0.*f", static_cast<int>(digits), taken)) << digits;
        }
    }
    for (const double number : {1.0000001e80, -1.7976931348623157e308, HUGE_VAL, -HUGE_VAL, std::nan(""), -std::nan("")})
        EXPECT_EQ(format(kFloat, holdingFloat(number)), printed("%0.*g", 25, number));
}

TEST_F(Formatting, FloatsWithFifteenDigits) {
    const auto write = [](DataValue value, size_t size) {
        support::GuardedBuffer buffer(size);
        convertDoubleToString(kFloat, false, value, buffer.text(), size);
        return std::string(buffer.text());
    };
    for (const double number : kFloats) {
        for (const double x : {number, std::nextafter(number, 0), std::nextafter(number, HUGE_VAL)}) {
            const double magnitude = std::fabs(x);
            const int places = magnitude < 1 ? 15 : 14 - static_cast<int>(std::floor(std::log10(magnitude)));
            EXPECT_EQ(write(holdingFloat(x), 50),
                      magnitude > 1e-15 && magnitude < 1e16 ? printed("%0.*f", places, x) : printed("%0.*e", 15, x));
        }
    }
    EXPECT_EQ(write(holdingFloat(0), 8), "0.00000");  // cut to the buffer
    EXPECT_EQ(write(holdingFloat(1.5), 4) + write(holdingFloat(std::nan("")), 8) + write(DataValue(), 1), "1.5nan");
}

// Every smaller buffer holds the beginning and a NUL; one of no size stays as it is.
TEST_F(Formatting, PackedBytesInBothOrdersIntoEverySize) {
    for (const support::Case& row : support::readCases("roundtrips.txt")) {
        const unsigned int type = stringToType(row[0]);
        for (const bool swap : {false, true}) {
            unsigned char packed[24];
            const char* error = nullptr;
            ASSERT_NE(convertFromStringAndPack(type, swap, row.pointer(1), packed, 24, error, nullptr, nullptr, nullptr, nullptr), ~0u);
            for (size_t size = 0; size <= row[2].size() + 40; ++size) {
                support::GuardedBuffer buffer(size);
                convertToString(type, swap, false, packed, buffer.text(), size);
                EXPECT_TRUE(size == 0 || buffer.text() == row[2].substr(0, size - 1)) << row.where << size;
                for (size_t i = row[2].size() + 1; i < size; ++i) ASSERT_EQ(buffer.data()[i], 0xa5) << "after the NUL";
            }
        }
    }
}

TEST_F(Formatting, ShortPackedDatesAndTimes) {
    setDateSize(4);
    g_timeSize = 4;
    unsigned char packed[] = {0xff, 0xff, 0xff, 0xfe, 1, 2, 3, 4};
    char text[64];
    convertToString(kDate, true, true, packed, text, sizeof text);
    EXPECT_STREQ(text, "1969-12-31 23:59:58+00");
    convertToString(kTime, true, false, packed, text, sizeof text);
    EXPECT_STREQ(text, "23:59:58");
    EXPECT_EQ(format(kDate, holding(int64_t{1} << 32)), "2106-02-07 06:28:16");  // a holder has all 64 bits
}

TEST_F(Formatting, NullsAndKindsWithoutTextLeaveTheBuffer) {
    unsigned char packed[32] = {};
    for (unsigned int type = 0; type < 256; ++type) {
        support::GuardedBuffer buffer(16);
        DataValue null, zero = holding(0);
        convertToString(type, false, true, null, buffer.text(), buffer.size());
        convertToString(type, false, true, static_cast<unsigned char*>(nullptr), buffer.text(), buffer.size());
        EXPECT_TRUE(buffer.untouched()) << type;
        convertToString(type, false, true, packed, buffer.text(), buffer.size());
        convertToString(type, false, true, zero, buffer.text(), buffer.size());
        const bool written = type < kKinds && g_column_lengths[type] != 0;
        EXPECT_EQ(buffer.untouched(), !written) << type;
    }
}

TEST(HexFormatting, BytesAndBounds) {
    const unsigned char bytes[] = {0x0a, 0xff, 0x00, 0x90};
    const char* const kTooSmall = "output buffer is too small for binary to hex-string conversion";
    const char* error = "untouched";
    EXPECT_EQ(convertBinaryToHexString(9, bytes, 4, nullptr, error), -1);
    EXPECT_STREQ(error, "untouched");
    for (unsigned int length = 0; length <= 4; ++length) {
        const std::string expected = std::string("0AFF0090").substr(0, length * 2);
        std::string appended = "x";
        EXPECT_EQ(convertBinaryToHexString(bytes, length, appended), static_cast<int>(length * 2));
        EXPECT_EQ(appended, "x" + expected);
        for (size_t size = 0; size <= 10; ++size) {
            support::GuardedBuffer buffer(size);
            error = "untouched";
            const bool fits = size > expected.size();
            EXPECT_EQ(convertBinaryToHexString(size, bytes, length, buffer.text(), error), fits ? static_cast<int>(expected.size()) : -1);
            EXPECT_STREQ(error, fits ? "untouched" : kTooSmall);
            EXPECT_TRUE(fits ? buffer.text() == expected : buffer.untouched());
        }
    }
}

TEST(FourDigits, AreTheIndex) {
    EXPECT_EQ(sizeof PlixTypes::four2ascii, 40000u);
    for (size_t i = 0; i < 10000; ++i) EXPECT_EQ(std::stoul(std::string(PlixTypes::four2ascii[i], 4)), i);
}

}  // namespace
}  // namespace DataTypes
