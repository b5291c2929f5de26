// kel-adapter-host check: every problem of a configuration at once, without connecting to anything unless
// asked to.
#pragma once

#include <string>
#include <vector>

namespace host {

struct CheckOptions {
    std::string config;
    std::vector<std::string> overrides;  // section.name=value
    bool connect = false;                // look into the database too, changing nothing
};

// Prints problems and notes, or that there is no problem, on standard output. The exit code.
int checkConfiguration(const CheckOptions& options);

}  // namespace host
