// What a configuration says: the stream, the adapter's connection parameters, and this host's own settings.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "host/toolkit/RowType.h"
#include "host/values/ValueTyping.h"
#include "jmsin/Parameters.h"

namespace host {

namespace params = jmsin::parameter;

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

// What holds of the configured data format; null where the name is none.
const jmsin::DataFormatInfo* dataFormatOf(const Settings& settings);

// Whether the messages' dates are seconds: object arrays and custom messages have no date formats.
bool readsDatesAsSeconds(const Settings& settings);

// The formats that the adapter reads texts by in discovery.
TemporalFormats discoveryFormats(const Settings& settings);

}  // namespace host
