// Field texts to values and packed values: every kind, every message.
#include "datatypes/ValueParsing.h"

#include <charconv>

#include "tests/datatypes/Support.h"
#include "tests/doubles/IdleAdapter.h"

namespace DataTypes {
namespace {

constexpr unsigned int kFailed = 4294967295u;

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
    EXPECT_EQ(packed == kFailed, error[0] != '\0');
    EXPECT_TRUE(buffer.untouched(packed == kFailed ? 0 : packed));
    return packed == kFailed ? std::string("!") + error : support::toHex(buffer.data(), packed);
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
        EXPECT_EQ(packed, "!" + error);
        EXPECT_EQ(support::show(value.decimalValue), "-77/9,1");
        return "!" + error;
    }
    EXPECT_EQ(packed, support::toHex(reinterpret_cast<unsigned char*>(&value), width));
    if (kindOf(type) == kDecimal) return support::show(value.decimalValue);
    char digits[32];
    if (type == kFloat) return {digits, std::to_chars(digits, digits + sizeof digits, value.floatValue).ptr};
    const unsigned int unused = 64 - 8 * width;
    return std::to_string(value.longValue << unused >> unused);
}

using Parsing = support::SettingsRestored;

TEST_F(Parsing, ListedTexts) {
    setlocale(LC_ALL, "de_DE.UTF-8");  // plays no part, where it is installed
    for (const support::Case& row : support::readCases("values.txt")) {
        if (row[0] == "money") setLegacyMoneyPrecision(static_cast<size_t>(row.number(2)));
        const char* format = row.fields.size() == 4 ? row.pointer(2) : nullptr;
        EXPECT_EQ(read(stringToType(row[0]), row.pointer(1), {format, format, format, format}), row.fields.back()) << row.line;
    }
    for (const unsigned int type : {6u, 9u, 31u, 255u}) EXPECT_EQ(read(type, "1"), "!conversion to unknown type");
}

TEST_F(Parsing, FormatsStandInForOneAnother) {
    setDateFormat(const_cast<char*>("%d"));
    for (const support::Case& row : support::readCases("standins.txt")) {
        const Formats formats{row.pointer(1), row.pointer(2), row.pointer(3), row.pointer(4)};
        EXPECT_EQ(read(stringToType(row[0]), "2", formats), row[5]) << row.line;
    }
}

// And as text again, into every size of buffer: the beginning and a NUL.
TEST_F(Parsing, PackedBytes) {
    setlocale(LC_ALL, "de_DE.UTF-8");
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
    for (const char* text : {"first", "", "third"}) {
        EXPECT_EQ(convert(kString, text, value), "");
        EXPECT_STREQ(value.stringValue, text);
    }
    EXPECT_EQ(convert(kString, value.stringValue + 2, value), "");  // the text may be what the holder has
    EXPECT_STREQ(value.stringValue, "ird");
    free(value.stringValue);
    value.isNull = true;
    for (const char* text : {"0AFF", "", "01"}) {
        EXPECT_EQ(convert(kBinary, text, value), "");
        EXPECT_EQ(support::toHex(value.binaryValue.bytes, value.binaryValue.length), text);
    }
    EXPECT_EQ(convert(kBinary, "0A 0B 0C", value), "DataType::convertFromString() could not convert binary data from hex.");
    EXPECT_TRUE(value.isNull);
    const char* const kPacking = "!DataType::convertFromStringAndPack() could not convert binary data from hex.";
    EXPECT_EQ(pack(kBinary, false, "0A 0B 0C", 16), kPacking);
}

TEST(HexText, BytesAndFaults) {
    for (const support::Case& row : support::readCases("hex.txt")) {
        support::GuardedBuffer buffer(static_cast<size_t>(row.number(1)));
        const char* error = "";
        const int count = convertBinaryFromHexString(row.pointer(0), buffer.data(), static_cast<unsigned int>(buffer.size()), error);
        const unsigned int written = count < 0 ? 0 : static_cast<unsigned int>(count);
        EXPECT_EQ(error + support::toHex(buffer.data(), written), row[2]) << row.line;
        EXPECT_TRUE(buffer.untouched(written) && (count < 0) == (error[0] != '\0')) << row.line;
    }
    for (int c = 1; c < 256; ++c) {  // every character as an upper nibble, and as a boolean
        const char hex[] = {static_cast<char>(c), '1', '\0'}, text[] = {hex[0], '\0'};
        unsigned char out = 0;
        const char* error = "";
        EXPECT_EQ(convertBinaryFromHexString(hex, &out, 1, error), isxdigit(c) != 0 ? 1 : -1) << c;
        EXPECT_EQ(out, isxdigit(c) != 0 ? std::stoi(hex, nullptr, 16) : 0) << c;
        EXPECT_EQ(read(kBoolean, text)[0] != '!', std::strchr("01fFnNtTyY", c) != nullptr) << c;
    }
    EXPECT_EQ(getBinaryDataSizeFromHexString("0A 0B"), 2u);
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
        const uint32_t type = adapter.testValue(row.pointer(0), row.pointer(1), row.pointer(2), row.pointer(3));
        EXPECT_EQ(typeToString(type), row[4]) << row.line;
    }
}

}  // namespace
}  // namespace DataTypes
