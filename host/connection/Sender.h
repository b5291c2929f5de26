// Puts messages on the configured destination, through the same bridge that the adapter receives through.
#pragma once

#include <string>

#include "host/connection/BridgeClient.h"

namespace host {

// Belongs to one thread, the one that calls reset; stop may come from another. All failures are Failures, of
// one sentence each, to follow the place of the line where there is one.
class Sender {
public:
    // The arguments stay with the caller and outlive the sender.
    Sender(Context& context, RowType& rowType, Parameters& parameters);
    ~Sender();
    Sender(const Sender&) = delete;
    Sender& operator=(const Sender&) = delete;

    // Connects as a producer. False: stopped, or the error sink and the connector's log have the reason.
    bool reset();
    void stop() { client_.stop(); }  // disconnects, at any time

    // Sends a text, a file's line say, as one message: for object arrays a JSON array of strings and nulls,
    // its elements as they stand; else a text message. Throws Failure.
    void send(const std::string& text);

private:
    bool sendObjectArray(const std::string& line);
    bool sendText(const std::string& text);

    BridgeClient client_;
    void* row_;
    bool isObjectArray_ = false;
};

}  // namespace host
