// How the connections are that the adapter's connector keeps, which the plug-in's own interface does not
// tell.
#pragma once

#include "jms/ConnectorMethods.h"

namespace host {

// The connector's numbers.
enum class ConnectionState { kOpen = 0, kLost = 1, kGivenUp = 2 };

// Static: the answer is for all receiving connectors of the process.
inline constexpr contract::Method kConnectionStateMethod = {"connectionState", "()I"};

// On a thread that is attached to the JVM. A connector that cannot be asked counts as connected.
ConnectionState connectionState();

}  // namespace host
