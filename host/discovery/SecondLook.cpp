#include "host/discovery/SecondLook.h"

#include <algorithm>
#include <stdexcept>

#include "jmsin/XmlScanner.h"

namespace host {

const std::string* PeekedMessage::find(const std::string& name) const {
    const auto found =
        std::find_if(fields.rbegin(), fields.rend(), [&](const auto& field) { return field.first == name; });
    return found != fields.rend() ? &found->second : nullptr;
}

std::optional<PeekedMessage> readXmlMessage(std::string_view text) {
    const auto element = xml::findElement(text);
    if (!element) return std::nullopt;
    PeekedMessage message{std::string(xml::nameOf(text, *element)), {}};
    const auto add = [&](std::string_view name, std::string_view value) {
        if (name != xml::kOpcodeAttribute) message.fields.emplace_back(name, value);
    };
    const size_t failed = xml::walkAttributes(text, *element, add);
    if (failed != std::string_view::npos) return std::nullopt;
    return message;
}

SecondLook::SecondLook(Session& session)
    : settings_(session.settings),
      client_(session.context, session.rowType, session.settings.connection, BridgeClient::Use::kBrowse) {
    fix_.reset(&client_);
}

std::vector<PeekedMessage> SecondLook::messages(size_t limit) {
    std::vector<PeekedMessage> messages;
    if (isFix()) fix_.makeDictionary(client_.parameter(params::kFixVersion));
    if (!client_.reset()) return messages;
    std::vector<std::string> texts;
    client_.bridge().browseTextMessages(texts);
    for (const std::string& text : texts) {
        if (messages.size() == limit) break;
        if (auto message = read(text)) messages.push_back(std::move(*message));
    }
    client_.stop();
    return messages;
}

std::optional<PeekedMessage> SecondLook::read(const std::string& text) const {
    if (isFix()) return readFix(text);
    auto message = readXmlMessage(text);
    const bool isOther = message && message->element != settings_.streamName;
    return isOther && flagOf(settings_, params::kMatchStreamName) ? std::nullopt : message;
}

std::optional<PeekedMessage> SecondLook::readFix(const std::string& text) const {
    NewFixUtils::FieldMap fields;
    try {
        if (!fix_.parseFixMessage(text, fields)) return std::nullopt;
    } catch (const std::out_of_range&) {
        return std::nullopt;
    }
    PeekedMessage message;
    for (const auto& [tag, value] : fields) {
        std::string name;
        if (fix_.fieldNameByTag(tag, name)) message.fields.emplace_back(name, value);
    }
    return message;
}

}  // namespace host
