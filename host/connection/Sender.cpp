#include "host/connection/Sender.h"

#include <rapidjson/reader.h>

#include <optional>
#include <vector>

#include "host/configuration/Settings.h"
#include "host/process/Failure.h"
#include "host/values/ModifiedUtf8.h"

namespace host {

namespace {

using Elements = std::vector<std::optional<std::string>>;

// Takes one JSON array of strings and nulls, and nothing else.
class ArrayHandler : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, ArrayHandler> {
public:
    bool Default() { return false; }
    bool StartArray() { return depth_++ == 0; }
    bool EndArray(rapidjson::SizeType) { return true; }
    bool Null() { return add(std::nullopt); }
    bool String(const char* text, rapidjson::SizeType length, bool) {
        std::string modified;
        return appendModifiedUtf8({text, length}, modified) && add(std::move(modified));
    }
    const Elements& elements() const { return elements_; }

private:
    bool add(std::optional<std::string> element) {
        elements_.push_back(std::move(element));
        return depth_ == 1;
    }
    int depth_ = 0;
    Elements elements_;
};

Elements readArray(const std::string& line) {
    ArrayHandler handler;
    rapidjson::Reader reader;
    rapidjson::StringStream stream(line.c_str());
    const bool isParsed = reader.Parse(stream, handler);
    // A zero byte ends the stream early and hides what follows it.
    const size_t zero = line.find('\0');
    if (isParsed && zero == std::string::npos) return handler.elements();
    throw Failure(
        "this is no JSON array of strings and nulls, such as [\"Trades\",\"i\",\"IBM\",null], at byte " +
        std::to_string(isParsed ? zero : reader.GetErrorOffset()) + ".");
}

}  // namespace

Sender::Sender(Context& context, RowType& rowType, Parameters& parameters)
    : client_(context, rowType, parameters, BridgeClient::Use::kSend),
      row_(createConnectionRow("RowByOrder")) {}

Sender::~Sender() { deleteConnectionRow(row_); }

bool Sender::reset() {
    isObjectArray_ = client_.parameter(params::kDataFormat) == jmsin::infoOf(DataFormat::kObjectArray).name;
    return client_.reset();
}

void Sender::send(const std::string& text) {
    if (isObjectArray_ ? sendObjectArray(text) : sendText(text)) return;
    JmsUtils& bridge = client_.bridge();
    bridge.exceptionOccurred(bridge.getJniEnv());
    throw Failure("the message could not be sent; the reason stands above.");
}

bool Sender::sendText(const std::string& text) {
    std::string modified;
    size_t position = 0;
    if (!appendModifiedUtf8(text, modified, &position))
        throw Failure("this is no UTF-8, at byte " + std::to_string(position) + ".");
    return client_.bridge().sendTextMessage(modified, row_);
}

bool Sender::sendObjectArray(const std::string& line) {
    clearData(row_);
    int index = 0;
    for (const auto& element : readArray(line))
        setFieldAsStringWithIndex(row_, index++, element ? element->c_str() : nullptr);
    // The line holds the stream's name and the opcode already, where they belong.
    constexpr bool kAddPrefix = false;
    return client_.bridge().sendObjectArrayMessage(client_.callGetStreamName(), row_, kAddPrefix);
}

}  // namespace host
