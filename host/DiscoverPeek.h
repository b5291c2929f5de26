// What the discovery entry points do not tell of XML messages: the element's name, and attributes that only
// later messages have.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/Session.h"

namespace host {

struct XmlSample {
    std::string element;
    std::vector<std::string> attributes;  // without the opcode's, in the message's order
};

// As the adapter reads a message; none for one that it refuses.
std::optional<XmlSample> readXmlSample(std::string_view text);

// Browses the session's destination over a connection of its own, which is closed at the end; of a topic it
// hears later messages than any browse before. On the thread that drives the adapter. Empty when nothing is
// waiting or can be browsed.
std::vector<XmlSample> peekXml(Session& session);

}  // namespace host
