// What a configuration says: the stream, the adapter's connection parameters, where the rows go, and this
// host's own settings.
#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "host/database/SinkSettings.h"
#include "host/toolkit/RowType.h"
#include "host/values/ValueTyping.h"
#include "jmsin/Parameters.h"

namespace host {

namespace params = jmsin::parameter;

// A column that this host fills from what stands around the message.
struct EnvelopeColumn {
    Column column;
    std::size_t position;  // among all columns of the stream
    std::string from;      // a header's name, or "property." and a property's; in modified UTF-8
};

struct Settings {
    // [stream] and [connection], in modified UTF-8
    std::string streamName;
    std::vector<Column> columns;           // of the message's own fields: those that the adapter is given
    std::vector<EnvelopeColumn> envelope;  // the others, in the order of their positions
    Parameters connection;                 // with the defaults that a server hands in for the three formats
    std::set<std::string> malformed;       // "section.name" of what is absent here for its value's kind

    SinkSettings sink;  // [sink], with what is absent there filled in; without a URL there is no sink

    // [host]; relative paths of the file count from its folder
    std::vector<std::string> classPath;
    std::vector<std::string> addClassPath;
    std::vector<std::string> jvmOptions;
    std::string plugin;
    int logLevel = 4;
    std::string selector;        // which messages are wanted, in UTF-8; "": all
    std::int64_t prefetch = 0;   // how many messages the provider sends ahead; 0: what it does of itself
    bool serverSettles = false;  // the connector acknowledges as for a server, else this host says when
    std::string rejects;         // the file that keeps messages without a row; "": none does
};

// All columns of the stream in the order of the file: those of a row that is handed over.
std::vector<Column> streamColumns(const Settings& settings);

bool hasKeys(const Settings& settings);  // whether one of them is a key

// Whether rows go into a database, and what the destination is.
bool hasSink(const Settings& settings);
bool isQueue(const Settings& settings);
bool isDurable(const Settings& settings);

bool isAtActiveMq(const Settings& settings);  // whether that is the provider, as far as can be seen

// The connection's batchsize; 0 where none is given.
std::int64_t batchSizeOf(const Settings& settings);

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
