#include "datatypes/ValueParsing.h"

#include <cstdlib>
#include <cstring>

#include "datatypes/DecimalShape.h"
#include "datatypes/Packing.h"
#include "datatypes/Settings.h"
#include "datatypes/TextReading.h"
#include "datatypes/TypeCodes.h"

namespace DataTypes {
namespace {

using internal::fail;

constexpr unsigned int kFailed = 0xffffffff;
constexpr char kOverflow[] = "output buffer overflow";
constexpr char kUnknownType[] = "conversion to unknown type";

// As the caller gave them; they are resolved only for the kinds that need one.
struct Formats {
    const char* date;
    const char* timestamp;
    const char* bigdatetime;
    const char* time;

    const char* forDate() const { return date != nullptr ? date : g_date_format; }
    const char* forTimestamp() const { return timestamp != nullptr ? timestamp : forDate(); }
    const char* forBigdatetime() const { return bigdatetime != nullptr ? bigdatetime : forTimestamp(); }
    const char* forTime() const { return time != nullptr ? time : g_time_format; }
};

bool readDecimal(const unsigned int& type, const char* text, FixedDecimalValue& value, const char*& error) {
    return value.setDecimalValue(precisionOf(type), scaleOf(type), text) ||
           fail(error, "input exceeds specified precision");
}

// Reads a value of fixed width; the holder's null flag is not looked at.
bool readFixed(const unsigned int& type, const char* text, const Formats& formats, DataValue& value,
               const char*& error) {
    const unsigned int kind = kindOf(type);
    const char* const present = text != nullptr ? text : "";
    switch (kind) {
        case kInt16:
            return internal::readInt16(present, value.int16Value, error);
        case kInteger:
            return internal::readInteger(present, value.integerValue, error);
        case kLong:
            return internal::readLong(present, value.longValue, error);
        case kInterval:
            return internal::readInterval(present, value.longValue, error);
        case kFloat:
            return internal::readFloat(present, value.floatValue, error);
        case kBoolean:
            return internal::readBoolean(present, value.booleanValue, error);
        case kDate:
            return internal::readDate(present, formats.forDate(), value.longValue, error);
        case kTime:
            return internal::readTime(present, formats.forTime(), value.longValue, error);
        case kTimestamp:
            return internal::readTimestamp(text, formats.forTimestamp(), value.longValue, error);
        case kBigdatetime:
            return internal::readBigdatetime(text, formats.forBigdatetime(), value.longValue, error);
        case kDecimal:
            return readDecimal(type, present, value.decimalValue, error);
        default:
            if (kind != kMoney && !isNumberedMoney(kind)) return fail(error, kUnknownType);
            return internal::readMoney(present, internal::moneyPlaces(kind), value.longValue, error);
    }
}

unsigned int packString(const char* text, unsigned char* out, size_t outSize, const char*& error) {
    const size_t size = std::strlen(text) + 1;
    if (size > outSize || size >= kFailed) {
        error = kOverflow;
        return kFailed;
    }
    std::memcpy(out, text, size);
    return static_cast<unsigned int>(size);
}

unsigned int packBinary(const char* hex, unsigned char* out, size_t outSize, const char*& error) {
    const uint32_t length = getBinaryDataSizeFromHexString(hex);
    const uint32_t prefix = __builtin_bswap32(length);
    if (outSize < sizeof prefix + length) {
        error = kOverflow;
        return kFailed;
    }
    if (!internal::readHex(hex, out + sizeof prefix, length)) {
        error = "DataType::convertFromStringAndPack() could not convert binary data from hex.";
        return kFailed;
    }
    std::memcpy(out, &prefix, sizeof prefix);
    return static_cast<unsigned int>(sizeof prefix + length);
}

bool takeString(const char* text, DataValue& value, const char*& error) {
    char* const copy = strdup(text);  // before the release: the text may be the one held
    if (!value.isNull) free(value.stringValue);
    value.isNull = true;
    if (copy == nullptr)
        return fail(error, "DataType::convertFromString() could not allocate memory for string copy.");
    value.stringValue = copy;
    value.isNull = false;
    return true;
}

bool takeBinary(const char* hex, DataValue& value, const char*& error) {
    if (!value.isNull) free(value.binaryValue.bytes);
    value.isNull = true;
    const unsigned int length = getBinaryDataSizeFromHexString(hex);
    auto* const bytes = static_cast<unsigned char*>(malloc(length != 0 ? length : 1));
    if (bytes == nullptr) {
        return fail(error, "DataType::convertFromString() could not allocate memory for binary value.");
    }
    if (!internal::readHex(hex, bytes, length)) {
        free(bytes);
        return fail(error, "DataType::convertFromString() could not convert binary data from hex.");
    }
    value.binaryValue = {bytes, length};
    value.isNull = false;
    return true;
}

}  // namespace

unsigned int convertFromStringAndPack(const unsigned int& type, bool swapBytes, const char* text,
                                      unsigned char* out, unsigned long outSize, const char*& error,
                                      const char* dateFormat, const char* timestampFormat,
                                      const char* bigdatetimeFormat, const char* timeFormat) {
    const unsigned int kind = kindOf(type);
    if (kind == kString) return packString(text != nullptr ? text : "", out, outSize, error);
    if (kind == kBinary) return packBinary(text != nullptr ? text : "", out, outSize, error);
    if (!internal::hasFixedWidth(kind)) {
        error = kUnknownType;
        return kFailed;
    }
    const unsigned int width = g_column_lengths[kind];
    if (outSize < width) {
        error = kOverflow;
        return kFailed;
    }
    DataValue value;
    if (!convertFromString(type, text, value, error, dateFormat, timestampFormat, bigdatetimeFormat,
                           timeFormat)) {
        return kFailed;
    }
    internal::pack(type, swapBytes, value, out);
    return width;
}

bool convertFromString(const unsigned int& type, const char* text, DataValue& value, const char*& error,
                       const char* dateFormat, const char* timestampFormat, const char* bigdatetimeFormat,
                       const char* timeFormat) {
    const unsigned int kind = kindOf(type);
    if (kind == kString) return takeString(text != nullptr ? text : "", value, error);
    if (kind == kBinary) return takeBinary(text != nullptr ? text : "", value, error);
    const Formats formats{dateFormat, timestampFormat, bigdatetimeFormat, timeFormat};
    if (!readFixed(type, text, formats, value, error)) return false;
    value.isNull = false;
    return true;
}

}  // namespace DataTypes
