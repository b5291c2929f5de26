// Puts messages on the configured destination, through the same bridge that the adapter receives through.
#pragma once

#include <map>
#include <string>

#include "adapter/Adapter.h"
#include "host/connection/StoppableReset.h"
#include "host/toolkit/Context.h"
#include "host/toolkit/RowType.h"
#include "jms/JmsUtils.h"

namespace host {

// Belongs to one thread, the one that calls reset; stop may come from another. All failures are Failures, of
// one sentence each, to follow the place of the line where there is one.
class Sender : public Adapter {
public:
    // The arguments stay with the caller and outlive the sender.
    Sender(Context& context, RowType& rowType, Parameters& parameters);
    ~Sender() override;

    // Connects as a producer. False: stopped, or the error sink and the connector's log have the reason.
    bool reset() override;
    void stop() override;  // disconnects, at any time

    // Sends a text, a file's line say, as one message: for object arrays a JSON array of strings and nulls,
    // its elements as they stand; else a text message. Throws Failure.
    void send(const std::string& text);

    // An adapter that only sends.
    void* getNext() override { return nullptr; }
    void putNext(void* /*row*/) override {}
    bool canDiscover() override { return false; }

private:
    std::string parameter(const char* name);
    bool sendObjectArray(const std::string& line);
    bool sendText(const std::string& text);

    bool connect();

    JmsUtils jms_;
    StoppableReset connecting_;
    std::map<std::string, std::string> columnMap_;  // no names are mapped
    void* row_;
    bool isObjectArray_ = false;
};

}  // namespace host
