#include "datatypes/Packing.h"

#include <algorithm>
#include <cstring>

#include "datatypes/Settings.h"
#include "datatypes/TypeCodes.h"

namespace DataTypes::internal {
namespace {

constexpr size_t kWord = sizeof(uint64_t);

// Of a decimal's third word only the two bytes in use change places, so that they stay its first.
void swapDecimal(unsigned char* bytes) {
    std::reverse(bytes, bytes + kWord);
    std::reverse(bytes + kWord, bytes + 2 * kWord);
    std::swap(bytes[2 * kWord], bytes[2 * kWord + 1]);
}

void swapValue(unsigned int kind, unsigned char* bytes, size_t width) {
    if (kind == kDecimal) {
        swapDecimal(bytes);
    } else {
        std::reverse(bytes, bytes + width);
    }
}

}  // namespace

bool hasFixedWidth(unsigned int kind) { return kind < kKinds && g_column_lengths[kind] != 0; }

void pack(const unsigned int& type, bool swapBytes, const DataValue& value, unsigned char* out) {
    const unsigned int kind = kindOf(type);
    const size_t width = g_column_lengths[kind];
    std::memcpy(out, &value, width);
    if (swapBytes) swapValue(kind, out, width);
}

DataValue unpack(const unsigned int& type, bool swapBytes, const unsigned char* packed) {
    DataValue value;
    if (packed == nullptr) return value;
    const unsigned int kind = kindOf(type);
    const bool isShort = (kind == kDate && g_dateSize == 4) || (kind == kTime && g_timeSize == 4);
    const size_t width = isShort ? sizeof(int32_t) : g_column_lengths[kind];
    unsigned char bytes[sizeof(FixedDecimalValue)];
    std::memcpy(bytes, packed, width);
    if (swapBytes) swapValue(kind, bytes, width);
    std::memcpy(&value, bytes, width);
    if (isShort) value.longValue = value.integerValue;
    value.isNull = false;
    return value;
}

}  // namespace DataTypes::internal
