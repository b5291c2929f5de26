// What every command that connects to the provider needs before it does.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/configuration/ConfigurationFile.h"
#include "host/toolkit/Context.h"
#include "host/toolkit/RowType.h"

namespace host {

struct SessionOptions {
    std::string config;
    std::vector<std::string> overrides;  // section.name=value
    std::optional<int> logLevel;
};

// A sound configuration, the message catalogue loaded, the JVM running, and errors
// and log going to standard error. At most one a process. The constructor throws Failure.
class Session {
public:
    // `logLevel` goes before the settings' one.
    explicit Session(Settings sound, std::optional<int> logLevel = {});
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    Settings settings;
    Context context;
    RowType rowType;
    std::atomic<std::int64_t> errors{0};  // how many the adapter has reported
};

}  // namespace host
