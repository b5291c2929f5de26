#include "host/connection/RejectReasons.h"

#include <optional>
#include <string_view>

#include "host/process/Console.h"
#include "host/values/ModifiedUtf8.h"
#include "host/values/Text.h"
#include "jmsin/XmlScanner.h"

namespace host {

namespace {

constexpr size_t kLongestShown = 60;  // of a message, in bytes

// "300288-3_JMSIN_ADAPTER_NOSTREAMNAME" of a text that the catalogue made; "" for any other.
std::string keyOf(std::string_view text) {
    const std::string_view key = text.substr(0, text.find_first_of(": "));
    const bool isKey =
        !key.empty() && key.front() >= '0' && key.front() <= '9' && key.find('_') != std::string_view::npos;
    return std::string(isKey ? key : std::string_view());
}

std::string excerpt(std::string_view text) {
    const std::string_view begin = wholeCharacters(text, kLongestShown);
    return inQuotes(std::string(begin)) + (begin.size() < text.size() ? "..." : "");
}

// What stands where the stream's name should, and the keys that say so.
struct OtherStream {
    std::string seen;
    std::string keys;
};

OtherStream ofCsv(const Settings& settings, const std::string& body) {
    const std::string delimiter = toUtf8(parameterOf(settings, params::kDelimiter));
    return {"its first field is " + excerpt(std::string_view(body).substr(0, body.find(delimiter))),
            "connection.delimiter (" + inQuotes(delimiter) +
                "), connection.expectStreamNameOpcode and stream.name decide"};
}

OtherStream ofXml(const std::string& body) {
    std::string modified;
    appendModifiedUtf8(body, modified);
    const auto element = xml::findElement(modified);
    const std::string name = element ? toUtf8(xml::nameOf(modified, *element)) : std::string();
    return {"its element is named " + excerpt(name), "connection.matchStreamName and stream.name decide"};
}

OtherStream ofArray(const Settings& settings, Delivery& delivery, size_t message) {
    const auto first = delivery.firstElement(message);
    const bool isConverted = dataFormatOf(settings)->format == DataFormat::kCustom;
    return {std::string(isConverted ? "the converter's first text" : "its first element") +
                (first ? " is " + excerpt(*first) : " is null"),
            isConverted ? "connection.converterClassName and stream.name decide"
                        : "connection.expectStreamNameOpcode and stream.name decide"};
}

Reject silent(const Settings& settings, Delivery* delivery, size_t message) {
    const jmsin::DataFormatInfo* info = dataFormatOf(settings);
    Reject reject;
    if (info == nullptr || delivery == nullptr) {
        reject.text = "the adapter gives no reason: it is for another stream, or no row can be made of it.";
        return reject;
    }
    if (info->format == DataFormat::kFix) {
        reject.text =
            "its field 8 (BeginString) has fewer than four characters, or there is none for a column.";
        return reject;
    }
    OtherStream other;
    if (info->isText) {
        const std::string body = delivery->copyOf(message).body.value_or("");
        other = info->format == DataFormat::kXml ? ofXml(body) : ofCsv(settings, body);
    } else {
        other = ofArray(settings, *delivery, message);
    }
    reject.text =
        other.seen + ", but the stream is " + inQuotes(toUtf8(settings.streamName)) + "; " + other.keys + ".";
    return reject;
}

}  // namespace

std::optional<Reject> reasonOf(const Settings& settings, HeardErrors& heard, Delivery* delivery,
                               size_t message) {
    if (delivery != nullptr) {
        if (auto refusal = delivery->refusal(message)) {
            if (delivery->isMessage(message)) return Reject{Stage::kReceive, "", std::move(*refusal), ""};
            say(*refusal);
            return std::nullopt;
        }
    }
    if (!heard.errors.empty()) {
        const AdapterError error = std::move(heard.errors.back());
        heard.errors.pop_back();
        return Reject{error.isOfRow ? Stage::kType : Stage::kParse, keyOf(error.text), toUtf8(error.text),
                      toUtf8(error.column)};
    }
    if (!heard.logged.empty())
        return Reject{Stage::kParse, keyOf(heard.logged.back()), toUtf8(heard.logged.back()), ""};
    return silent(settings, delivery, message);
}

}  // namespace host
