// What is in force beyond the words of the configuration.
#pragma once

#include <string>
#include <vector>

#include "host/configuration/Settings.h"

namespace host {

// How many messages at most wait for one settling by this host.
std::int64_t settleAfter(const Settings& settings);

// The system properties, as name=value in UTF-8, by which the connector knows who settles messages and when,
// and which are wanted.
std::vector<std::string> connectorProperties(const Settings& settings);

// The provider's address, in modified UTF-8, with what a sink and host.prefetch ask of the provider's client.
// What the configured one says already stays as it says it.
std::string urlInForce(const Settings& settings);

// The adapter's parameters with that address.
Parameters connectionInForce(const Settings& settings);

}  // namespace host
