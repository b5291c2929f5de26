// A connection of this host's own to the configured destination, over the bridge that the adapter receives
// through.
#pragma once

#include <map>
#include <string>

#include "adapter/Adapter.h"
#include "host/connection/StoppableReset.h"
#include "host/toolkit/Context.h"
#include "host/toolkit/RowType.h"
#include "jms/JmsUtils.h"

namespace host {

// As much of an adapter as the bridge needs, and the bridge. Belongs to one thread, the one that calls reset;
// stop may come from another.
class BridgeClient : public Adapter {
public:
    enum class Use { kSend, kBrowse };

    // The arguments stay with the caller and outlive the client.
    BridgeClient(Context& context, RowType& rowType, Parameters& parameters, Use use);
    ~BridgeClient() override;

    // Connects. False: stopped, or the error sink and the connector's log have the reason.
    bool reset() override;
    void stop() override;  // disconnects, at any time

    JmsUtils& bridge() { return jms_; }
    std::string parameter(const char* name) const;  // "" when it is absent

    // No rows come or go through the adapter itself.
    void* getNext() override { return nullptr; }
    void putNext(void* /*row*/) override {}
    bool canDiscover() override { return false; }

private:
    bool connect();

    const Parameters& parameters_;
    const Use use_;
    JmsUtils jms_;
    StoppableReset connecting_;
    std::map<std::string, std::string> columnMap_;  // no names are mapped
};

}  // namespace host
