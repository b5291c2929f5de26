#include "host/values/ValueTyping.h"

#include <array>
#include <charconv>
#include <cstdlib>

#include "datatypes/DataTypes.h"
#include "host/values/Text.h"

namespace host {

namespace {

constexpr size_t kLongestText = 64;  // of any value but strings and binary ones

// What the library makes of a text; strings and bytes that it allocates are freed.
class TypedValue {
public:
    explicit TypedValue(std::uint32_t type) : type_(type) {}
    ~TypedValue() {
        if (!held_.isNull && type_ == DataTypes::kBinary) std::free(held_.binaryValue.bytes);
    }
    TypedValue(const TypedValue&) = delete;
    TypedValue& operator=(const TypedValue&) = delete;

    bool read(const char* text, const TemporalFormats& formats, const char*& error) {
        return DataTypes::convertFromString(type_, text, held_, error, formats.date.c_str(),
                                            formats.timestamp.c_str(), nullptr, formats.time.c_str());
    }

    void set(std::int64_t number) {
        held_.longValue = number;
        held_.isNull = false;
    }

    Value value() {
        switch (type_) {
            case DataTypes::kBoolean:
                return held_.booleanValue != 0;
            case DataTypes::kInt16:
                return std::int64_t{held_.int16Value};
            case DataTypes::kInteger:
                return std::int64_t{held_.integerValue};
            case DataTypes::kLong:
                return held_.longValue;
            case DataTypes::kFloat:
                return held_.floatValue;
            case DataTypes::kBinary: {
                std::string digits;
                DataTypes::convertBinaryToHexString(held_.binaryValue.bytes, held_.binaryValue.length,
                                                    digits);
                return digits;
            }
            default: {
                char written[kLongestText] = "";
                DataTypes::convertToString(type_, false, false, held_, written, sizeof written);
                return std::string(written);
            }
        }
    }

private:
    std::uint32_t type_;
    DataTypes::DataValue held_;
};

}  // namespace

std::optional<std::uint32_t> typeCode(std::string_view name) {
    const std::string text(name);
    const std::uint32_t code = DataTypes::stringToType(text);
    // The library takes any name with "decimal" in it, and numbers that no decimal can have.
    const bool isName = DataTypes::typeToString(code) == text || DataTypes::typeToLegacyString(code) == text;
    if (code == DataTypes::kUntyped || !isName || code == DataTypes::kDecimal) return std::nullopt;
    return code;
}

std::string typeName(std::uint32_t type) { return DataTypes::typeToString(type); }

std::string typeNames() {
    std::string names;
    for (unsigned int kind = 0; kind < DataTypes::kKinds; ++kind) {
        const bool hasName = kind != DataTypes::kUntyped && kind != DataTypes::kReserved;
        if (!hasName || DataTypes::isNumberedMoney(kind)) continue;
        if (kind == DataTypes::kDecimal) {
            addToList(names, "decimal(P,S) with P from 1 to 34 and S from 0 to P");
        } else {
            addToList(names, DataTypes::typeToString(kind));
        }
        if (kind == DataTypes::kMoney) addToList(names, "money(1) to money(15)");
    }
    return names;
}

bool readValue(std::uint32_t type, const std::string& text, const TemporalFormats& formats, Value& value,
               std::string& reason) {
    if (type == DataTypes::kString) {
        value = text;
        return true;
    }
    TypedValue typed(type);
    const char* error = "";
    if (!typed.read(text.c_str(), formats, error)) {
        reason = error;
        if (!reason.empty() && reason.back() == '.') reason.pop_back();  // the caller ends the sentence
        return false;
    }
    value = typed.value();
    return true;
}

bool setMoment(std::uint32_t type, std::int64_t millis, Value& value) {
    TypedValue moment(type);
    switch (type) {
        case DataTypes::kDate:
            moment.set(millis / 1000);
            break;
        case DataTypes::kTimestamp:
            moment.set(millis);
            break;
        case DataTypes::kBigdatetime:
            moment.set(millis * 1000);
            break;
        default:
            return false;
    }
    value = moment.value();
    return true;
}

std::string writeValue(const Value& value) {
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    if (const auto* flag = std::get_if<bool>(&value)) return *flag ? "true" : "false";
    std::array<char, 32> buffer;
    std::to_chars_result written{buffer.data(), std::errc()};
    if (const auto* integer = std::get_if<std::int64_t>(&value))
        written = std::to_chars(buffer.data(), buffer.data() + buffer.size(), *integer);
    if (const auto* number = std::get_if<double>(&value))
        written = std::to_chars(buffer.data(), buffer.data() + buffer.size(), *number);
    return {buffer.data(), written.ptr};
}

}  // namespace host
