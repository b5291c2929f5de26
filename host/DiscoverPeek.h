// What the discovery entry points do not tell of XML and FIX messages: the XML element's name, attributes
// that only later messages have, and whether a sample's blank text is a blank value or none at all.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/Session.h"

namespace host {

struct PeekedMessage {
    std::string element;                  // of XML; "" otherwise
    std::vector<std::string> attributes;  // or the names of FIX fields; without the opcode's
};

// As the adapter reads an XML message; none for one that it refuses.
std::optional<PeekedMessage> readXmlMessage(std::string_view text);

// The messages of XML or FIX that the session's adapter takes for samples, at most `limit` of them, in its
// order. Browses the destination over a connection of its own, which is closed at the end; of a topic it
// hears later messages than any browse before. On the thread that drives the adapter. Empty when nothing is
// waiting or can be browsed.
std::vector<PeekedMessage> peek(Session& session, size_t limit);

}  // namespace host
