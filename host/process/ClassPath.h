// The Java class path, of jars that are found and there.
#pragma once

#include <string>
#include <vector>

namespace host {

// The connector, the provider's jars (`jars`, else those of ActiveMQ from this distribution) and those that
// are added, joined by ':'. A name without a folder is looked for where jars are kept. Throws Failure when
// files are missing; it names each, with the package that holds it where that is known.
std::string classPath(const std::vector<std::string>& jars, const std::vector<std::string>& added);

// Where a broker keeps its messages.
enum class BrokerStore { kMemory, kFiles };

// The same for the broker of this distribution's ActiveMQ.
std::string brokerClassPath(BrokerStore store);

}  // namespace host
