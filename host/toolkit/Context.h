// One adapter's surroundings, as plain objects; `callback` of the C interface is the address of a Context.
//
// Everything handed in must outlive the adapter. Texts are in the JVM's modified UTF-8.
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace host {

struct ServerRow;

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

inline Context* contextOf(void* callback) { return static_cast<Context*>(callback); }

// Where a connection row could not become a server row.
struct RowFault {
    const char* column;  // "": no column is to blame
};

// Sets who hears of every text that is added to any error list, as it is added, with the fault when it is one
// of a row; may be called from any thread. Set it before an adapter is created.
void setErrorSink(std::function<void(const char* text, const RowFault* fault)> sink);

// Reads the message catalogue: lines "key = text with {0}", "#" begins a comment line. On failure false, with
// one sentence in `error`; texts are then the keys themselves. Load it before an adapter is created.
bool loadCatalogue(const std::string& file, std::string& error);

}  // namespace host

// The platform's type: what an adapter reports about itself.
struct AdapterStatistics {
    std::map<std::string, std::string> values;
};
