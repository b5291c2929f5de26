// Field texts to values and packed values: every kind, every message.
#include "datatypes/ValueParsing.h"

#include <charconv>
#include <clocale>

#include "tests/datatypes/Support.h"

namespace DataTypes {
namespace {

constexpr unsigned int kFailed = 4294967295u;

struct Formats {
    const char *date = nullptr, *timestamp = nullptr, *bigdatetime = nullptr, *time = nullptr;
};

std::string show(unsigned int type, const DataValue& value) {
    char text[32];
    const unsigned int kind = kindOf(type);
    if (kind == kDecimal)
        return support::toText(support::coefficientOf(value.decimalValue)) + "/" + std::to_string(value.decimalValue.shape);
    if (kind == kFloat) return {text, std::to_chars(text, text + sizeof text, value.floatValue).ptr};
    if (kind == kInt16) return std::to_string(value.int16Value);
    if (kind == kBoolean) return std::to_string(value.booleanValue);
    return std::to_string(kind == kInteger ? value.integerValue : value.longValue);
}

unsigned int pack(unsigned int type, bool swap, const char* text, support::GuardedBuffer& buffer, const char*& error,
                  const Formats& formats = {}) {
    return convertFromStringAndPack(type, swap, text, buffer.data(), buffer.size(), error, formats.date, formats.timestamp,
                                    formats.bigdatetime, formats.time);
}

// The value that a text of fixed width reads as, or "!" and the error. Both forms must agree, and a failure
// must leave the value and the buffer as they were.
std::string read(unsigned int type, const char* text, const Formats& formats = {}) {
    DataValue value;
    value.decimalValue = {0x7777777777777777, 0x7777777777777777, 0x7777777777777777};
    const std::string before = show(kDecimal, value);
    const char* error = "untouched";
    const bool done = convertFromString(type, text, value, error, formats.date, formats.timestamp, formats.bigdatetime, formats.time);
    EXPECT_EQ(value.isNull, !done);
    support::GuardedBuffer buffer(24);
    const char* packError = "untouched";
    const unsigned int packed = pack(type, false, text, buffer, packError, formats);
    EXPECT_STREQ(packError, error);
    if (!done) {
        EXPECT_EQ(packed, kFailed);
        EXPECT_TRUE(buffer.untouched());
        EXPECT_EQ(show(kDecimal, value), before);
        return std::string("!") + error;
    }
    EXPECT_STREQ(error, "untouched");
    EXPECT_EQ(packed, g_column_lengths[kindOf(type)]);
    EXPECT_EQ(std::memcmp(buffer.data(), &value, packed), 0);
    return show(type, value);
}

TEST(ValueParsing, ListedTexts) {
    for (const support::Case& row : support::readCases("values.txt")) {
        const bool hasFormat = row.fields.size() == 4;
        const char* format = hasFormat ? row.pointer(2) : nullptr;
        EXPECT_EQ(read(stringToType(row[0]), row.pointer(1), {format, format, format, format}), row.fields.back()) << row.where;
    }
    for (const unsigned int type : {6u, 9u, 31u, 255u}) EXPECT_EQ(read(type, "1"), "!conversion to unknown type");
}

using Settings = support::SettingsRestored;

TEST_F(Settings, LegacyMoneyWithTheMostAndNoPlaces) {
    setLegacyMoneyPrecision(18);
    EXPECT_EQ(read(kMoney, "-9.223372036854775808"), "-9223372036854775808");
    EXPECT_EQ(read(kMoney, "9.223372036854775808"), "!money constant out of range");
    setLegacyMoneyPrecision(0);
    EXPECT_EQ(read(kMoney, "5.abc"), "5");
    EXPECT_EQ(read(kMoney, "-9223372036854775808"), "-9223372036854775808");
}

TEST_F(Settings, FormatsStandInForOneAnother) {
    char format[] = "%d";
    setDateFormat(format);
    for (const support::Case& row : support::readCases("standins.txt")) {
        const Formats formats{row.pointer(1), row.pointer(2), row.pointer(3), row.pointer(4)};
        EXPECT_EQ(read(stringToType(row[0]), "2", formats), row[5]) << row.where;
    }
}

// Every size of buffer from none to enough, in both byte orders.
TEST(ValueParsing, PackedBytes) {
    for (const support::Case& row : support::readCases("packed.txt")) {
        for (size_t size = 0; size <= 25; ++size) {
            for (const bool swap : {false, true}) {
                SCOPED_TRACE(row.where + " into " + std::to_string(size));
                const std::string& expected = row[swap ? 3 : 2];
                support::GuardedBuffer buffer(size);
                const char* error = "untouched";
                const unsigned int packed = pack(stringToType(row[0]), swap, row.pointer(1), buffer, error);
                if (size < expected.size() / 2) {
                    EXPECT_TRUE(packed == kFailed && buffer.untouched());
                    EXPECT_STREQ(error, "output buffer overflow");
                } else {
                    EXPECT_EQ(support::toHex(buffer.data(), packed), expected);
                    EXPECT_STREQ(error, "untouched");
                }
            }
        }
    }
    EXPECT_EQ(getLengthFromPackedBinary(reinterpret_cast<const unsigned char*>("\x01\x02\x03\x04")), 0x01020304u);
    EXPECT_EQ(getLengthFromPackedBinary(nullptr), 0u);
    for (const unsigned int type : {1u, 2u, 3u, 4u, 7u, 26u, 28u, 30u}) {  // the width is checked before the text
        support::GuardedBuffer narrow(3);
        const char* error = nullptr;
        EXPECT_EQ(pack(type, false, "zz", narrow, error), kFailed);
        EXPECT_STREQ(error, "output buffer overflow") << type;
    }
}

TEST(ValueParsing, StringsAndBinariesReplaceWhatTheHolderHas) {
    DataValue value;
    const char* error = "untouched";
    const auto convert = [&](unsigned int type, const char* text) {
        return convertFromString(type, text, value, error, nullptr, nullptr, nullptr, nullptr);
    };
    for (const char* text : {"first", "", "third"}) {
        ASSERT_TRUE(convert(kString, text) && !value.isNull);
        EXPECT_STREQ(value.stringValue, text);
    }
    ASSERT_TRUE(convert(kString, value.stringValue + 2));  // the text may be what the holder has
    EXPECT_STREQ(value.stringValue, "ird");
    free(value.stringValue);
    value.isNull = true;
    for (const char* text : {"0AFF", "", "01"}) {
        ASSERT_TRUE(convert(kBinary, text) && !value.isNull);
        EXPECT_EQ(support::toHex(value.binaryValue.bytes, value.binaryValue.length), text);
    }
    EXPECT_STREQ(error, "untouched");
    EXPECT_FALSE(convert(kBinary, "0A 0B 0C"));
    EXPECT_STREQ(error, "DataType::convertFromString() could not convert binary data from hex.");
    EXPECT_TRUE(value.isNull);
    support::GuardedBuffer buffer(16);
    EXPECT_EQ(pack(kBinary, false, "0A 0B 0C", buffer, error), kFailed);
    EXPECT_STREQ(error, "DataType::convertFromStringAndPack() could not convert binary data from hex.");
    EXPECT_TRUE(buffer.untouched());
}

TEST(HexText, BytesAndFaults) {
    for (const support::Case& row : support::readCases("hex.txt")) {
        SCOPED_TRACE(row.where);
        support::GuardedBuffer buffer(static_cast<size_t>(row.number(1)));
        const char* error = "untouched";
        const int count = convertBinaryFromHexString(row.pointer(0), buffer.data(), static_cast<unsigned int>(buffer.size()), error);
        EXPECT_EQ(count < 0 ? error : support::toHex(buffer.data(), static_cast<size_t>(count)), row[2]);
        EXPECT_TRUE(count < 0 ? buffer.untouched() : error == std::string("untouched"));
    }
    for (int c = 1; c < 256; ++c) {  // every character as an upper nibble
        const char hex[] = {static_cast<char>(c), '1', '\0'};
        unsigned char out = 0;
        const char* error = "";
        const bool good = isxdigit(c) != 0, blank = std::strchr(" \t\r\n", c) != nullptr;
        EXPECT_EQ(convertBinaryFromHexString(hex, &out, 1, error), good ? 1 : -1) << c;
        EXPECT_EQ(out, good ? std::stoi(hex, nullptr, 16) : 0);
        EXPECT_STREQ(error, good ? "" : blank ? "Odd number of characters in hex string" : "Invalid hex character") << c;
    }
    EXPECT_EQ(getBinaryDataSizeFromHexString("0A 0B"), 2u);
    EXPECT_EQ(getBinaryDataSizeFromHexString(nullptr), 0u);
}

TEST(Splitting, AtTheLastPoint) {
    for (const support::Case& row : support::readCases("splits.txt")) {
        for (const bool micros : {false, true}) {
            char* parts[2] = {};
            ASSERT_TRUE((micros ? splitBigdatetime : splitTimestamp)(row.pointer(0), parts[0], parts[1]));
            EXPECT_EQ(parts[0], row[1]) << row.where;
            EXPECT_EQ(parts[1], row[micros ? 3 : 2]) << row.where;
            for (char* part : parts) free(part);
        }
    }
    char* part = nullptr;
    EXPECT_FALSE(splitTimestamp(nullptr, part, part) || splitBigdatetime(nullptr, part, part));
}

TEST(ProcessLocale, PlaysNoPart) {
    if (setlocale(LC_ALL, "de_DE.UTF-8") == nullptr) GTEST_SKIP() << "de_DE.UTF-8 is not installed";
    for (const char* text : {"1.5", "+1.5", "0x1.8"}) EXPECT_EQ(read(kFloat, text), "1.5");
    EXPECT_EQ(read(kFloat, "1,5"), "!float constant does not end with a legal character");
    EXPECT_EQ(read(kDate, "3 March 2020", {"%d %B %Y"}), "1583193600");
    for (const double number : {1.5, 1.5e18, 1.5e90}) {
        DataValue value;
        value.isNull = false;
        value.floatValue = number;
        char text[128];
        convertToString(kFloat, false, false, value, text, 64);
        convertDoubleToString(kFloat, false, value, text + std::strlen(text), 64);
        EXPECT_EQ(std::strchr(text, ','), nullptr) << text;
    }
    setlocale(LC_ALL, "C");
}

}  // namespace
}  // namespace DataTypes
