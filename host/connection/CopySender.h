// Sends copies of kept messages: to the configured destination, or to one inside this process from which the
// adapter takes them as it took the messages themselves.
#pragma once

#include <string>

#include "host/configuration/Settings.h"
#include "host/connection/BridgeClient.h"
#include "host/rows/Batch.h"

namespace host {

// The settings with a queue of a broker inside this process in place of the destination; all that decides
// what becomes of a message is as it was.
Settings withOwnQueue(Settings settings);

// Belongs to one thread, the one that calls reset; stop may come from another.
class CopySender {
public:
    // The arguments stay with the caller and outlive the sender.
    CopySender(Context& context, RowType& rowType, Parameters& parameters);

    // Connects. False: stopped, or the error sink and the connector's log have the reason.
    bool reset() { return client_.reset(); }
    void stop() { client_.stop(); }

    // The copy says of which kept message it is one, and stands for that one's ID and time. False: it was not
    // sent, as the connector has said.
    bool send(const MessageCopy& copy, const std::string& replayOf);

private:
    BridgeClient client_;
};

}  // namespace host
