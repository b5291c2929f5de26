// The JMS input adapter: takes one message at a time from a queue or topic and returns it as a server row.
//
// Life: constructed; `reset` reads the connection parameters and connects; `getNext` again and again; `stop`.
// Threads: `reset`, `getNext`, `commitTransaction` and `discover` on one thread; `stop` from any.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "adapter/Adapter.h"

class JmsUtils;
class NewFixUtils;

namespace jmsin {
struct Parameters;
}

class JmsInAdapter : public Adapter {
public:
    JmsInAdapter();
    ~JmsInAdapter() override;

    void* getNext() override;
    void putNext(void* row) override;  // an input adapter takes no rows: only logged
    void stop() override;              // a receive that waits ends at once
    bool reset() override;
    bool canDiscover() override;

    // Durable subscriptions: commits when the total of messages is a multiple of the batch size (1 when it
    // succeeded, else 0), and otherwise returns how many whole batches there were. Not durable: 0.
    int64_t commitTransaction() override;

    // Proposes a schema, in discovery mode: browses messages without consuming them and fills field names,
    // field types and at most discoveryRowLimit sample rows. The name is not used; field keys stay empty.
    // After a success later calls answer true without browsing; after each earlier attempt the connector is
    // disconnected.
    bool discover(std::string name) override;
    using Adapter::discover;

    // The steps of a discovery, for one data format each: false when nothing could be browsed.
    bool discoverCsv();
    bool discoverXml();
    bool discoverFix();
    bool discoverObjectArray();
    bool discoverCustom();
    // Takes the connection row's fields as one sample; widens `types`, one per column seen so far, over it.
    void addRowToDiscovery(std::vector<unsigned int>& types, std::vector<std::vector<std::string>>& rows);
    void makeDiscoveredRows(std::vector<std::vector<std::string>>& rows);
    void makeDiscoveredFieldTypes(std::vector<unsigned int>& types);

    // Reads and checks the connection parameters in a fixed order. The first fault is appended to the
    // connection errors; what was read before it stays.
    bool getParams();

    // Lays a message's text into the connection row: field strings and opcode. False: the message is for
    // another stream, or is malformed, which the connection errors then say; fields set before stay set.
    // `allFields`: every token is a field, whether or not messages begin with stream name and opcode.
    bool parseCsvMessage(std::string& text, bool allFields);

    // Does the same for the first self-closing element of the text. `names`, when given, gets the name of
    // every attribute but the opcode's appended, in message order.
    bool parseXmlMessage(std::string& text, std::vector<std::string>* names);

private:
    enum class Received { kRow, kNothing, kBad };
    struct Operations;  // what is done for one data format
    const Operations& operations() const;
    bool prepareFix();
    bool prepareCustom();
    Received receiveCsv();
    Received receiveXml();
    bool takeText();  // the next message's, or "", into text_
    Received receiveFix();
    Received receiveObjectArray();
    Received receiveCustom();
    bool discoverByFormat();
    bool discoverArrays(bool (JmsUtils::*browse)(std::vector<std::vector<std::string>>& messages));
    void makeNumberedColumns(std::vector<unsigned int>& types, std::vector<std::vector<std::string>>& rows);
    bool wantsMoreSamples(const std::vector<std::vector<std::string>>& rows) const;
    uint32_t typeOf(const char* value);

    bool placeToken(const std::string& token, int field, const std::string& text);
    bool matchesStream(std::string_view name);

    void trace(const char* key);   // logs the key's text at level 7
    bool refuse(const char* key);  // appends it to the errors; false
    bool refuse(const char* key, const std::string& parameter);

    std::unique_ptr<jmsin::Parameters> params_;
    std::unique_ptr<NewFixUtils> fix_;
    std::unique_ptr<JmsUtils> jms_;
    void* row_ = nullptr;  // the connection row, cleared and filled for every message
    std::map<std::string, std::string> columnMap_;  // no parameter fills it
    // The message and the token in hand; kept for their capacity, unless a message made it large.
    std::string text_;
    std::string token_;
};
