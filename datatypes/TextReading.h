// One reader per family of types behind the conversions of ValueParsing.h. For the library's own files.
//
// Each returns true and sets the value, or sets the error and returns false. Texts are never null but where
// said.
#pragma once

#include <cstddef>
#include <cstdint>

namespace DataTypes::internal {

inline bool fail(const char*& error, const char* message) {
    error = message;
    return false;
}

bool readInt16(const char* text, int16_t& value, const char*& error);
bool readInteger(const char* text, int32_t& value, const char*& error);
bool readLong(const char* text, int64_t& value, const char*& error);
bool readInterval(const char* text, int64_t& value, const char*& error);
bool readFloat(const char* text, double& value, const char*& error);
bool readBoolean(const char* text, uint8_t& value, const char*& error);
bool readMoney(const char* text, int places, int64_t& value, const char*& error);

// Formats are resolved, not null. The text may be null for the two kinds that are split.
bool readDate(const char* text, const char* format, int64_t& seconds, const char*& error);
bool readTime(const char* text, const char* format, int64_t& seconds, const char*& error);
bool readTimestamp(const char* text, const char* format, int64_t& millis, const char*& error);
bool readBigdatetime(const char* text, const char* format, int64_t& micros, const char*& error);

// The bytes of a hex text that has as many as half its length; writes nothing unless it fits that.
bool readHex(const char* hex, unsigned char* out, size_t size);

}  // namespace DataTypes::internal
