// What the discovery entry points do not tell of XML and FIX messages: the XML element's name, attributes
// that only later messages have, and whether a sample's blank text is a blank value or none at all.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "fix/NewFixUtils.h"
#include "host/connection/BridgeClient.h"
#include "host/connection/Session.h"

namespace host {

// Texts in modified UTF-8.
struct PeekedMessage {
    std::string element;  // of XML; "" otherwise
    // Attributes or named FIX fields with their texts, without the opcode's; of those with one name the last
    // counts.
    std::vector<std::pair<std::string, std::string>> fields;

    const std::string* find(const std::string& name) const;  // null: the message has none
};

// As the adapter reads an XML message; none for one that it refuses.
std::optional<PeekedMessage> readXmlMessage(std::string_view text);

// A second look at the messages of XML or FIX that the session's adapter took for samples.
class SecondLook {
public:
    explicit SecondLook(Session& session);
    SecondLook(const SecondLook&) = delete;
    SecondLook& operator=(const SecondLook&) = delete;

    // At most `limit` messages, in the adapter's order. Browses the destination over a connection of its own,
    // which is closed at the end; of a topic it hears later messages than any browse before. On the thread
    // that drives the adapter. Empty when nothing is waiting or can be browsed.
    std::vector<PeekedMessage> messages(size_t limit);

    // Ends a look that goes on, or comes later. Any thread.
    void stop() { client_.stop(); }

private:
    bool isFix() const {
        return client_.parameter(params::kDataFormat) == jmsin::infoOf(DataFormat::kFix).name;
    }
    std::optional<PeekedMessage> read(const std::string& text) const;
    std::optional<PeekedMessage> readFix(const std::string& text) const;

    const Settings& settings_;
    BridgeClient client_;
    NewFixUtils fix_;
};

}  // namespace host
