// The Java class path that a configuration asks for.
#pragma once

#include <string>
#include <vector>

namespace host {

struct Settings;

// The connector, the provider's jars ([host] classPath, else those of ActiveMQ from this distribution) and
// [host] addClassPath, joined by ':'. A name without a folder is looked for where jars are kept. Throws
// Failure when files are missing; it names each, with the package that holds it where that is known.
std::string classPath(const Settings& settings);

// The same for the broker of this distribution's ActiveMQ; `store`: with its message store.
std::string brokerClassPath(bool store);

}  // namespace host
