#include "host/toolkit/ValueTyping.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "host/toolkit/Text.h"

namespace host {

namespace {

enum class Reading { kInteger, kFloat, kText };

struct ColumnType {
    std::uint32_t code;
    const char* name;
    Reading reading;
    std::int64_t lowest;
    std::int64_t highest;
};

template <typename Int>
constexpr ColumnType integerType(std::uint32_t code, const char* name) {
    return {code, name, Reading::kInteger, std::numeric_limits<Int>::min(), std::numeric_limits<Int>::max()};
}

constexpr ColumnType kColumnTypes[] = {
    integerType<std::int16_t>(0, "int16"), integerType<std::int32_t>(1, "integer"),
    integerType<std::int64_t>(2, "long"),  {3, "float", Reading::kFloat, 0, 0},
    {5, "string", Reading::kText, 0, 0},
};

const ColumnType* find(std::uint32_t code) {
    for (const ColumnType& type : kColumnTypes) {
        if (type.code == code) return &type;
    }
    return nullptr;
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// The whole text, after an optional "+", must be one number.
template <typename Number>
std::errc readNumber(std::string_view text, Number& number) {
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) return std::errc::invalid_argument;
    }
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc::invalid_argument || end != text.data() + text.size())
        return std::errc::invalid_argument;
    return error;
}

bool readInteger(const ColumnType& type, const std::string& text, Value& value, std::string& reason) {
    std::int64_t number = 0;
    if (readNumber(text, number) == std::errc() && number >= type.lowest && number <= type.highest) {
        value = number;
        return true;
    }
    reason = "allowed are whole numbers from " + std::to_string(type.lowest) + " to " +
             std::to_string(type.highest);
    return false;
}

bool readFloat(const std::string& text, Value& value, std::string& reason) {
    double number = 0;
    const size_t sign = text.starts_with('+') || text.starts_with('-') ? 1 : 0;
    const bool begins = sign < text.size() && (isDigit(text[sign]) || text[sign] == '.');
    if (begins && readNumber(text, number) == std::errc()) {
        value = number;
        return true;
    }
    reason = "allowed are decimal numbers such as -12.5 or 1e9, of a magnitude that a double can hold";
    return false;
}

}  // namespace

std::optional<std::uint32_t> typeCode(std::string_view name) {
    for (const ColumnType& type : kColumnTypes) {
        if (name == type.name) return type.code;
    }
    return std::nullopt;
}

std::string typeName(std::uint32_t type) {
    const ColumnType* found = find(type);
    return found != nullptr ? found->name : "N/A";
}

std::string typeNames() {
    std::string names;
    for (const ColumnType& type : kColumnTypes) addToList(names, type.name);
    return names;
}

bool readValue(std::uint32_t type, const std::string& text, const TemporalFormats& /*formats*/, Value& value,
               std::string& reason) {
    const ColumnType* found = find(type);
    if (found == nullptr) {
        reason = "columns of this type cannot be filled; those of the types " + typeNames() + " can";
        return false;
    }
    switch (found->reading) {
        case Reading::kInteger:
            return readInteger(*found, text, value, reason);
        case Reading::kFloat:
            return readFloat(text, value, reason);
        case Reading::kText:
            break;
    }
    value = text;
    return true;
}

std::string writeValue(const Value& value) {
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    std::array<char, 32> buffer;
    std::to_chars_result written{buffer.data(), std::errc()};
    if (const auto* integer = std::get_if<std::int64_t>(&value))
        written = std::to_chars(buffer.data(), buffer.data() + buffer.size(), *integer);
    if (const auto* number = std::get_if<double>(&value))
        written = std::to_chars(buffer.data(), buffer.data() + buffer.size(), *number);
    return {buffer.data(), written.ptr};
}

}  // namespace host
