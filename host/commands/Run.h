// kel-adapter-host run: feeds the configured stream from the destination and writes its rows.
#pragma once

#include <cstdint>
#include <string>

#include "host/connection/Session.h"

namespace host {

struct RunOptions {
    SessionOptions session;
    std::string plugin;            // "": the configured one, else the one beside this program
    std::string feed;              // "": nothing is fed
    std::int64_t rows = 0;         // end after so many good rows; 0: no such end
    std::int64_t mostRejects = 0;  // end, and fail, at so many rejects; 0: no such end
    double idle = 0;               // end after so many seconds with nothing waiting; 0: no such end
    std::string format;            // the name of one of rowForms
    std::string out;               // "": standard output
};

// The exit code. Throws Failure.
int runRows(const RunOptions& options);

}  // namespace host
