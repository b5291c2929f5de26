// A configuration file in TOML: the stream, the adapter's connection parameters, and this host's own
// settings.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/toolkit/HostContext.h"

namespace host {

struct Settings {
    // [stream] and [connection], in modified UTF-8
    std::string streamName;
    std::vector<Column> columns;
    Parameters connection;            // with the defaults that a server hands in for the three formats
    std::set<std::string> malformed;  // "section.name" of what is absent here for its value's kind

    // [host]; relative paths of the file count from its folder
    std::vector<std::string> classPath;
    std::vector<std::string> addClassPath;
    std::vector<std::string> jvmOptions;
    std::string plugin;
    int logLevel = 4;
};

// A connection parameter's text in modified UTF-8, "" for none; and a flag as the adapter reads it: absent is
// true.
std::string parameterOf(const Settings& settings, const char* name);
bool flagOf(const Settings& settings, const char* name);

// Whether the configuration must name a stream and its columns.
enum class StreamSection { kNeeded, kOptional };

// Reads the file, then the overrides "section.name=value". Every problem found is appended to `problems`,
// one sentence each: where, what was found, what is allowed. Nothing is connected or looked up. None: the
// file cannot be read at all.
std::optional<Settings> readSettings(const std::string& file, const std::vector<std::string>& overrides,
                                     std::vector<std::string>& problems,
                                     StreamSection stream = StreamSection::kNeeded);

}  // namespace host
