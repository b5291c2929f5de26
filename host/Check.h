// kel-adapter-host check: every problem of a configuration at once, without connecting to anything.
#pragma once

#include <string>
#include <vector>

#include "host/Configuration.h"

namespace host {

// What the adapter, the connector or the provider would refuse or silently take for something else: one
// sentence each, with the parameter, what was found and what is allowed.
std::vector<std::string> connectionProblems(const Settings& settings);

// Prints the problems of the file, or that there are none, on standard output. The exit code.
int checkConfiguration(const std::string& file, const std::vector<std::string>& overrides);

}  // namespace host
