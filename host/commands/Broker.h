// kel-adapter-host broker: an ActiveMQ broker for trying things out, in the foreground.
#pragma once

#include <string>

namespace host {

struct BrokerOptions {
    int port = 61616;  // on 127.0.0.1; 0: any free one
    std::string data;  // folder of its message store; "": it keeps messages in memory only
};

// Prints the broker's URL when it is ready and serves until SIGINT or SIGTERM. The exit code. Throws Failure.
int runBroker(const BrokerOptions& options);

}  // namespace host
