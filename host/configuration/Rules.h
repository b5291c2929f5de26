// kel-adapter-host check: every problem of a configuration at once, without connecting to anything.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/configuration/ConfigurationFile.h"

namespace host {

struct CheckResult {
    // What the adapter, the connector or the provider would refuse or silently take for something else: one
    // sentence each, with the parameter, what was found and what is allowed.
    std::vector<std::string> problems;
    // What works, though hardly as meant.
    std::vector<std::string> notes;
};
CheckResult checkSettings(const Settings& settings);

// The settings of a file and its overrides in which nothing is wrong that is seen before connecting; else
// says all problems and throws Failure. `insteadOfInJvmBroker`, where given, refuses a broker inside this
// process, which no other sees, and begins what the sentence tells to use.
Settings soundSettings(const std::string& file, const std::vector<std::string>& overrides,
                       StreamSection stream = StreamSection::kNeeded,
                       const char* insteadOfInJvmBroker = nullptr);

// Whether the URL is of a broker inside the process that uses it, also as one of several: vm://a,
// vm:(...), failover:(vm://a).
bool isInJvmBroker(std::string_view url);

// Prints problems and notes of the file, or that there is no problem, on standard output. The exit code.
int checkConfiguration(const std::string& file, const std::vector<std::string>& overrides);

}  // namespace host
