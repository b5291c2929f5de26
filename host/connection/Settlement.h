// Who tells the provider that messages are safe: this host through the connector's side door, or the
// adapter's own commit, as with a server that knows of no such door.
#pragma once

#include <cstddef>
#include <memory>

#include "host/connection/LoadedAdapter.h"

namespace host {

class Delivery;

// Belongs to the reading thread. Throws Failure.
class Settlement {
public:
    virtual ~Settlement() = default;

    // How many messages at most wait for one settling.
    virtual size_t most() const = 0;

    // Null: nothing is known of the messages but what the adapter makes of them.
    virtual Delivery* delivery() = 0;

    // Whether the messages taken come again in any case.
    virtual bool isLost() = 0;

    // The messages taken are safe. False: they may come again.
    virtual bool settle() = 0;

    // They are not, and come again.
    virtual void forget() = 0;
};

// Settles after every `most` messages.
std::unique_ptr<Settlement> settledByHost(size_t most);

// Settles every message, as the adapter's batch size allows.
std::unique_ptr<Settlement> settledByAdapter(LoadedAdapter& adapter);

}  // namespace host
