#include "host/connection/EnvelopeFields.h"

#include <charconv>
#include <string_view>

#include "host/values/ModifiedUtf8.h"
#include "host/values/Text.h"

namespace host {

namespace {

constexpr std::string_view kProperty = "property.";

// Headers that hold milliseconds since 1970.
bool isTime(std::string_view header) { return header == "JMSTimestamp" || header == "JMSExpiration"; }

Delivery::Values valuesOf(const std::string& from, Delivery& delivery) {
    return from.starts_with(kProperty) ? delivery.property(from.substr(kProperty.size()))
                                       : delivery.header(from);
}

// False: the text is no value of the column, for the reason.
bool read(const EnvelopeColumn& column, const std::string& text, const TemporalFormats& formats, Value& value,
          std::string& reason) {
    if (isTime(column.from)) {
        std::int64_t millis = 0;
        std::from_chars(text.data(), text.data() + text.size(), millis);
        if (setMoment(column.column.type, millis, value)) return true;
    }
    return readValue(column.column.type, text, formats, value, reason);
}

// What is wrong with a message that has no such header or property; "": nothing.
std::string faultOfAbsent(const EnvelopeColumn& column) {
    if (!column.column.key) return {};
    return "key column \"" + column.column.name + "\" is null, because the message has no " + column.from +
           "; a key column needs a value.";
}

}  // namespace

EnvelopeFields::EnvelopeFields(const Settings& settings, const RowType& streamType)
    : settings_(settings), streamType_(streamType), formats_(discoveryFormats(settings)) {}

std::string EnvelopeFields::faultOf(const EnvelopeColumn& column, const std::string& text,
                                    Value& value) const {
    std::string reason;
    if (read(column, text, formats_, value, reason)) return {};
    std::string fault = "column \"";
    fault.append(column.column.name).append("\" (").append(typeName(column.column.type));
    fault.append(") cannot hold the text ").append(quoted(text)).append(" of ").append(column.from);
    return fault.append(": ").append(reason).append(".");
}

void EnvelopeFields::fill(Batch& batch, Delivery& delivery) const {
    for (const EnvelopeColumn& column : settings_.envelope) {
        const Delivery::Values values = valuesOf(column.from, delivery);
        const std::string& name = column.column.name;
        for (size_t i = 0; i < batch.messages.size(); ++i) {
            BatchMessage& message = batch.messages[i];
            if (!message.row) continue;
            const std::optional<std::string> text = i < values.size() ? values[i] : std::nullopt;
            Value value;
            const std::string fault = text ? faultOf(column, *text, value) : faultOfAbsent(column);
            if (fault.empty()) {
                std::vector<Value>& all = message.row->values;
                all.insert(all.begin() + static_cast<std::ptrdiff_t>(column.position), std::move(value));
                message.row->type = &streamType_;
            } else {
                message.row.reset();
                message.reject = Reject{Stage::kType, "", toUtf8(fault), toUtf8(name)};
            }
        }
    }
}

}  // namespace host
