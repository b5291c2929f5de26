// From a field's text to the value of a row, and back, by the data type library.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "datatypes/Settings.h"
#include "host/values/ServerRow.h"

namespace host {

using DataTypes::kDefaultDateFormat;  // of timestamps too
using DataTypes::kDefaultTimeFormat;
using DataTypes::kSecondsFormat;

struct TemporalFormats {
    std::string time;
    std::string date;
    std::string timestamp;
};

// The code of a type's lower-case server name, ordinary or legacy; none for a name that no column can have.
std::optional<std::uint32_t> typeCode(std::string_view name);

// The reverse, in the ordinary spelling.
std::string typeName(std::uint32_t type);

// The names that typeCode knows, as a list for messages.
std::string typeNames();

// Reads `text` as a value of the type. On failure false, with what is wrong in `reason`, to follow a colon;
// `value` is untouched.
bool readValue(std::uint32_t type, const std::string& text, const TemporalFormats& formats, Value& value,
               std::string& reason);

// Sets `value` to the moment, in milliseconds since 1970, as the type holds it. False, and untouched, for a
// type that is no date, timestamp or bigdatetime.
bool setMoment(std::uint32_t type, std::int64_t millis, Value& value);

// The value as text; null is the empty one.
std::string writeValue(const Value& value);

}  // namespace host
