// What a configuration must keep to beyond the form of its file.
#pragma once

#include <string>
#include <vector>

#include "host/configuration/Settings.h"

namespace host {

struct CheckResult {
    // What the adapter, the connector or the provider would refuse or silently take for something else: one
    // sentence each, with the parameter, what was found and what is allowed.
    std::vector<std::string> problems;
    // What works, though hardly as meant.
    std::vector<std::string> notes;
};
CheckResult checkSettings(const Settings& settings);

}  // namespace host
