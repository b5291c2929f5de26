// The Java virtual machine that this process hosts for the adapter.
#pragma once

#include <string>
#include <vector>

namespace host {

// Creates the JVM and publishes it as the platform does. At most once a process; it is never destroyed,
// which would wait for attached threads for ever: a process with a JVM leaves with std::_Exit. `options` come
// after this host's own and may override them. Throws Failure.
void startJvm(const std::string& classPath, const std::vector<std::string>& options);

// Sets the system property "name=value", in UTF-8: an option of the JVM is read in the process's locale, and
// so loses letters. Behind startJvm, on its thread. Throws Failure.
void setJavaProperty(const std::string& property);

// Lives as long as a thread that may become attached to the JVM, and detaches it at its end.
class JvmThread {
public:
    JvmThread() = default;
    ~JvmThread();
    JvmThread(const JvmThread&) = delete;
    JvmThread& operator=(const JvmThread&) = delete;
};

}  // namespace host
