// Field texts to values and packed values: every kind, every message.
#include "datatypes/ValueParsing.h"

#include <charconv>

#include "tests/datatypes/Support.h"
#include "tests/doubles/IdleAdapter.h"

namespace DataTypes {
namespace {

using Formats = std::array<const char*, 4>;  // of date, timestamp, bigdatetime, time

// Sets the value, and the error unless that is "".
std::string convert(unsigned int type, const char* text, DataValue& value, const Formats& formats = {}) {
    const char* error = "";
    const bool done = convertFromString(type, text, value, error, formats[0], formats[1], formats[2], formats[3]);
    EXPECT_TRUE(done == !value.isNull && done == (error[0] == '\0')) << error;
    return error;
}

// The bytes in hexadecimal digits, or "!" and the error, which must leave the buffer as it was.
std::string pack(unsigned int type, bool swap, const char* text, size_t size, const Formats& formats = {}) {
    support::GuardedBuffer buffer(size);
    const char* error = "";
    const unsigned int packed =
        convertFromStringAndPack(type, swap, text, buffer.data(), size, error, formats[0], formats[1], formats[2], formats[3]);
    const bool failed = packed == 4294967295u;
    EXPECT_TRUE(failed == (error[0] != '\0') && buffer.untouched(failed ? 0 : packed)) << error;
    return failed ? std::string("!") + error : support::toHex(buffer.data(), packed);
}

// The value that a text of fixed width reads as, or "!" and the error. Packing must agree; a failure must leave the
// value as it was; a buffer too small is told of any text.
std::string read(unsigned int type, const char* text, const Formats& formats = {}) {
    DataValue value;
    value.decimalValue = support::decimal("-77", 9, 1);
    const std::string error = convert(type, text, value, formats);
    const unsigned int width = kindOf(type) < kKinds ? g_column_lengths[kindOf(type)] : 0;
    EXPECT_TRUE(width == 0 || pack(type, false, text, width - 1, formats) == "!output buffer overflow") << text;
    const std::string packed = pack(type, false, text, 24, formats);
    if (!error.empty()) {
        EXPECT_EQ(packed + support::show(value.decimalValue), "!" + error + "-77/9,1");
        return "!" + error;
    }
    EXPECT_EQ(packed, support::toHex(reinterpret_cast<unsigned char*>(&value), width));
    if (kindOf(type) == kDecimal) return support::show(value.decimalValue);
    char digits[32];
    if (type == kFloat) return {digits, std::to_chars(digits, digits + sizeof digits, value.floatValue).ptr};
    return std::to_string(value.longValue << (64 - 8 * width) >> (64 - 8 * width));
}

// In a locale with a decimal comma.
struct Parsing : support::SettingsRestored {
    void SetUp() override {
        setenv("LOCPATH", DATATYPES_TEST_LOCALES, 1);
        ASSERT_NE(setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
    }
};

TEST_F(Parsing, ListedTexts) {
    for (const support::Case& row : support::readCases("values.txt")) {
        if (row[0] == "money") setLegacyMoneyPrecision(row.number(2));
        Formats formats{};
        for (size_t i = 2; i + 1 < row.fields.size(); ++i) formats[i - 2] = row.pointer(i);
        EXPECT_EQ(read(stringToType(row[0]), row.pointer(1), formats), row.fields.back()) << row.line;
    }
    for (const unsigned int type : {6u, 9u, 31u, 255u}) EXPECT_EQ(read(type, "1"), "!conversion to unknown type");
    for (char c = 1; c < 127; ++c) {
        const std::string text(1, c);
        EXPECT_EQ(read(kBoolean, text.c_str())[0] == '!', std::string("01fFnNtTyY").find(c) == std::string::npos) << text;
    }
    setDateFormat(const_cast<char*>("%d"));
    EXPECT_EQ(read(kTimestamp, "2.5"), "86400500");
}

// And as text again, into every size of buffer: the beginning and a NUL.
TEST_F(Parsing, PackedBytes) {
    for (const support::Case& row : support::readCases("packed.txt")) {
        const unsigned int type = stringToType(row[0]);
        const std::string& written = row.fields.back();
        const size_t bytes = row[2].size() / 2;
        for (const bool swap : {false, true}) {
            EXPECT_EQ(pack(type, swap, row.pointer(1), bytes), row[swap ? 3 : 2]) << row.line;
            EXPECT_EQ(pack(type, swap, row.pointer(1), bytes - 1), "!output buffer overflow") << row.line;
            unsigned char packed[24];
            const char* error = "";
            convertBinaryFromHexString(row.pointer(swap ? 3 : 2), packed, sizeof packed, error);
            for (size_t size = 0; row.fields.size() > 4 && size < written.size() + 40; ++size) {
                support::GuardedBuffer buffer(size);
                convertToString(type, swap, false, packed, buffer.text(), size);
                EXPECT_TRUE(size == 0 || buffer.text() == written.substr(0, size - 1)) << row.line << size;
                EXPECT_TRUE(buffer.untouched(std::min(size, written.size() + 1))) << row.line << size;
            }
        }
    }
    EXPECT_EQ(getLengthFromPackedBinary(reinterpret_cast<const unsigned char*>("\x01\x02\x03\x04")), 0x01020304u);
    EXPECT_EQ(getLengthFromPackedBinary(nullptr), 0u);
}

TEST_F(Parsing, StringsAndBinariesReplaceWhatTheHolderHas) {
    DataValue value;
    for (const char* text : {"first", static_cast<const char*>(nullptr), "third"}) {
        EXPECT_EQ(convert(kString, text, value), "");
        EXPECT_STREQ(value.stringValue, text != nullptr ? text : "");
    }
    EXPECT_EQ(convert(kString, value.stringValue + 2, value), "");  // the text may be what the holder has
    EXPECT_STREQ(value.stringValue, "ird");
    free(value.stringValue);
    value.isNull = true;
    for (const char* text : {"0AFF", static_cast<const char*>(nullptr), "01"}) {
        EXPECT_EQ(convert(kBinary, text, value), "");
        EXPECT_EQ(support::toHex(value.binaryValue.bytes, value.binaryValue.length), text != nullptr ? text : "");
    }
    EXPECT_EQ(convert(kBinary, "0A 0B 0C", value), "DataType::convertFromString() could not convert binary data from hex.");
    EXPECT_TRUE(value.isNull);
    const char* const kPacking = "!DataType::convertFromStringAndPack() could not convert binary data from hex.";
    EXPECT_EQ(pack(kBinary, false, "0A 0B 0C", 16), kPacking);
}

TEST(HexText, BytesAndFaults) {
    for (const support::Case& row : support::readCases("hex.txt")) {
        support::GuardedBuffer buffer(row.number(1));
        const char* error = "";
        const int count = convertBinaryFromHexString(row.pointer(0), buffer.data(), row.number(1), error);
        const unsigned int written = std::max(count, 0);
        EXPECT_EQ(error + support::toHex(buffer.data(), written), row[2]) << row.line;
        EXPECT_TRUE(buffer.untouched(written) && (count < 0) == (error[0] != '\0')) << row.line;
    }
    EXPECT_EQ(getBinaryDataSizeFromHexString(nullptr), 0u);
}

TEST(Splitting, AtTheLastPoint) {
    for (const support::Case& row : support::readCases("splits.txt")) {
        for (const size_t column : {2u, 3u}) {
            char* parts[2] = {};
            ASSERT_TRUE((column == 2 ? splitTimestamp : splitBigdatetime)(row.pointer(0), parts[0], parts[1]));
            EXPECT_TRUE(parts[0] == row[1] && parts[1] == row[column]) << row.line << parts[0] << parts[1];
            for (char* part : parts) free(part);
        }
    }
    char* part = nullptr;
    EXPECT_FALSE(splitTimestamp(nullptr, part, part) || splitBigdatetime(nullptr, part, part));
}

TEST(ValueTesting, FirstTypeThatReads) {
    IdleAdapter adapter;
    for (const support::Case& row : support::readCases("testing.txt")) {
        EXPECT_EQ(typeToString(adapter.testValue(row.pointer(0), row.pointer(1), row.pointer(2), row.pointer(3))), row[4]) << row.line;
    }
}

}  // namespace
}  // namespace DataTypes
