#include "datatypes/ValueFormatting.h"

#include <climits>

#include "datatypes/DecimalShape.h"
#include "datatypes/Packing.h"
#include "datatypes/Settings.h"
#include "datatypes/TextWriting.h"
#include "datatypes/TypeCodes.h"

namespace DataTypes {
namespace {

void writeBoolean(uint8_t value, char* out, size_t outSize) {
    if (value != 0) {
        internal::copyText("true", 4, out, outSize);
    } else {
        internal::copyText("false", 5, out, outSize);
    }
}

// The scale of a type that has a precision is the type's.
int decimalScale(const unsigned int& type, const FixedDecimalValue& value) {
    return precisionOf(type) != 0 ? scaleOf(type) : value.scale();
}

char* appendHex(char* end, const unsigned char* data, size_t length) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    for (size_t i = 0; i < length; ++i) {
        *end++ = kDigits[data[i] >> 4];
        *end++ = kDigits[data[i] & 0xf];
    }
    return end;
}

}  // namespace

void convertToString(const unsigned int& type, bool swapBytes, bool utcSuffix, unsigned char* packed,
                     char* out, unsigned long outSize) {
    if (!internal::hasFixedWidth(kindOf(type))) return;
    DataValue value = internal::unpack(type, swapBytes, packed);
    convertToString(type, false, utcSuffix, value, out, outSize);
}

void convertToString(const unsigned int& type, bool, bool utcSuffix, DataValue& value, char* out,
                     unsigned long outSize) {
    const unsigned int kind = kindOf(type);
    if (value.isNull) return;
    switch (kind) {
        case kInt16:
            return internal::writeInteger(value.int16Value, out, outSize);
        case kInteger:
            return internal::writeInteger(value.integerValue, out, outSize);
        case kLong:
        case kInterval:
            return internal::writeInteger(value.longValue, out, outSize);
        case kFloat:
            return internal::writeFloat(value.floatValue, g_decimalSize, g_tolerance, out, outSize);
        case kBoolean:
            return writeBoolean(value.booleanValue, out, outSize);
        case kDate:
            return internal::writeDate(value.longValue, utcSuffix, out, outSize);
        case kTime:
            return internal::writeTime(value.longValue, utcSuffix, out, outSize);
        case kTimestamp:
            return internal::writeTimestamp(value.longValue, utcSuffix, out, outSize);
        case kBigdatetime:
            return internal::writeBigdatetime(value.longValue, utcSuffix, out, outSize);
        case kDecimal:
            return internal::writeDecimal(value.decimalValue, decimalScale(type, value.decimalValue), out,
                                          outSize);
        default:
            if (kind != kMoney && !isNumberedMoney(kind)) return;
            return internal::writeMoney(value.longValue, internal::moneyPlaces(kind), out, outSize);
    }
}

int convertBinaryToHexString(unsigned long outSize, const unsigned char* data, unsigned int length, char* out,
                             const char*& error) {
    if (out == nullptr) return -1;
    const size_t digits = size_t{length} * 2;
    if (digits + 1 > outSize || digits > INT_MAX) {  // nor can the result tell more
        error = "output buffer is too small for binary to hex-string conversion";
        return -1;
    }
    *appendHex(out, data, length) = '\0';
    return static_cast<int>(digits);
}

int convertBinaryToHexString(const unsigned char* data, unsigned int length, std::string& out) {
    const size_t start = out.size();
    out.resize(start + size_t{length} * 2);
    appendHex(out.data() + start, data, length);
    return static_cast<int>(out.size() - start);
}

}  // namespace DataTypes
