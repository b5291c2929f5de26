// kel-adapter-host discover: proposes a schema from the messages that wait on the destination, and takes
// none.
#pragma once

#include <string>

#include "host/connection/Session.h"

namespace host {

struct DiscoverOptions {
    SessionOptions session;
    std::string format;    // the name of one of discoveryForms
    int samples = 10;      // show at most so many of the at most ten
    bool explain = false;  // tell for each column how its type came about
    std::string stream;    // the proposed stream's name; "": from the configuration or the messages
};

// The exit code. Throws Failure.
int runDiscovery(const DiscoverOptions& options);

}  // namespace host
