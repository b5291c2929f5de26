// What the stand-in server hands to an adapter, as plain objects. The handles of the C interface are
// addresses of these: `callback` of a Context, the parameter set of a Parameters, the row type of a RowType.
//
// Everything handed in must outlive the adapter. Texts are in the JVM's modified UTF-8, because the adapter
// compares and passes them on as they are (host/toolkit/ModifiedUtf8.h converts).
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace host {

struct ServerRow;

struct Column {
    std::string name;
    std::uint32_t type;  // server type code
    bool key;
};

// A stream's name and columns.
class RowType {
public:
    RowType(std::string name, std::vector<Column> all);
    RowType(const RowType&) = delete;
    RowType& operator=(const RowType&) = delete;

    const Column* at(int index) const;               // null when out of range
    int indexOf(std::string_view columnName) const;  // -1: there is none

    const std::string streamName;
    const std::vector<Column> columns;

private:
    std::unordered_map<std::string_view, int> indexes_;  // views into `columns`
};

// Parameter name -> value; integers and flags as their text.
using Parameters = std::map<std::string, std::string, std::less<>>;

// Rows handed to a stream together; they are shared with whoever posted them.
using Transaction = std::vector<std::shared_ptr<ServerRow>>;

// One adapter's surroundings. `log` gets every text of a level up to `logLevel` (0 to 7) and may be called
// from any thread.
struct Context {
    std::string adapterName;
    int logLevel = 4;
    std::function<void(int level, const char* text)> log;
    std::atomic<int> state{0};

    // What the adapter reported or posted; nothing here acts on it.
    std::mutex lock;  // guards all that follows
    int connectionState = 0;
    bool outputActive = false;
    std::set<std::string> sessions;
    std::map<std::string, Transaction> posted;  // stream name -> what was posted to it last
};

// Sets who hears of every text that is added to any error list, as it is added; may be called from any
// thread. Set it before an adapter is created.
void setErrorSink(std::function<void(const char* text)> sink);

// Reads the message catalogue: lines "key = text with {0}", "#" begins a comment line. On failure false, with
// one sentence in `error`; texts are then the keys themselves. Load it before an adapter is created.
bool loadCatalogue(const std::string& file, std::string& error);

}  // namespace host

// The platform's type: what an adapter reports about itself.
struct AdapterStatistics {
    std::map<std::string, std::string> values;
};
