// The connector's limits, which are set by options of the JVM.
#pragma once

#include <string>

namespace host {

// What is wrong with an option that sets a limit, beginning with the option itself; "" for nothing, and for
// every other option.
std::string faultOfLimit(const std::string& jvmOption);

}  // namespace host
