// Field texts of every kind: what reads must pack to the same bytes, and what is written of it must read as
// it again.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

#include "datatypes/DataTypes.h"

namespace {

using DataTypes::DataValue;

// The formats under which written dates and times read again.
constexpr char kDateTime[] = "%Y-%m-%d %H:%M:%S";
constexpr char kTime[] = "%H:%M:%S";
constexpr int64_t kMillisIn1970To9999 = 253402300800000;

bool read(unsigned int type, const char* text, DataValue& value) {
    const char* error = nullptr;
    const bool done =
        DataTypes::convertFromString(type, text, value, error, kDateTime, kDateTime, kDateTime, kTime);
    if (done == (error != nullptr)) std::abort();
    return done;
}

// Floats are written shorter than they are, and times of day without their days.
bool readsAgain(unsigned int kind, const DataValue& value) {
    switch (kind) {
        case DataTypes::kFloat:
        case DataTypes::kTime:
            return false;
        case DataTypes::kDate:
            return value.longValue >= 0 && value.longValue < kMillisIn1970To9999 / 1000;
        case DataTypes::kTimestamp:
            return value.longValue >= 0 && value.longValue < kMillisIn1970To9999;
        case DataTypes::kBigdatetime:
            return value.longValue >= 0 && value.longValue < kMillisIn1970To9999 * 1000;
        default:
            return true;
    }
}

void check(unsigned int type, const char* text) {
    const unsigned int kind = DataTypes::kindOf(type);
    const size_t width = DataTypes::g_column_lengths[kind];
    DataValue value;
    unsigned char packed[24];
    const char* error = nullptr;
    const unsigned int written = DataTypes::convertFromStringAndPack(
        type, false, text, packed, sizeof packed, error, kDateTime, kDateTime, kDateTime, kTime);
    const bool done = read(type, text, value);
    if (done != (written == width) || (done && std::memcmp(packed, &value, width) != 0)) std::abort();
    if (!done) return;
    char again[512];
    DataTypes::convertToString(type, false, false, value, again, sizeof again);
    DataValue back;
    if (!readsAgain(kind, value)) return;
    if (!read(type, again, back) || std::memcmp(&back, &value, width) != 0) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // In a block of its own size: a read beyond the NUL shows.
    const std::unique_ptr<char[]> text(new char[size + 1]);
    if (size != 0) std::memcpy(text.get(), data, size);
    text[size] = '\0';
    for (unsigned int kind = 0; kind < DataTypes::kDecimal; ++kind) {
        if (DataTypes::g_column_lengths[kind] != 0) check(kind, text.get());
    }
    for (const int scale : {0, 2, 10, 34}) check(DataTypes::createFixedDecimal(34, scale), text.get());
    unsigned char bytes[64];
    const char* error = nullptr;
    DataTypes::convertBinaryFromHexString(text.get(), bytes, sizeof bytes, error);
    DataTypes::stringToType(text.get());
    return 0;
}
