// kel-adapter-host rejects: the messages of which no row could be made, and their way into rows after all.
#pragma once

#include <cstdint>
#include <string>

#include "host/connection/Session.h"

namespace host {

struct RejectsOptions {
    SessionOptions session;
    std::string plugin;     // "": the configured one, else the one beside this program
    bool list = false;      // as without any of these
    bool all = false;       // list those too that were sent again
    std::int64_t show = 0;  // 0: list
    std::string replay;     // a number, or "all"; "": list or show
    bool send = false;      // back to the destination, instead of into rows here
    std::string format;     // of rows as text: the name of one of rowForms
    std::string out;        // "": standard output
};

// The exit code. Throws Failure.
int runRejects(const RejectsOptions& options);

}  // namespace host
