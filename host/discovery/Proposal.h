// From what the discovery entry points answer to a stream that takes the messages which were sampled.
//
// All texts are in modified UTF-8, as the adapter's are.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "host/configuration/ConfigurationFile.h"
#include "host/discovery/SecondLook.h"
#include "host/values/ValueTyping.h"

namespace host {

// The answers of the entry points.
struct Discovery {
    std::vector<std::string> names;
    std::vector<std::string> types;
    std::vector<bool> keys;  // may be shorter: no key from there on
    std::vector<std::vector<std::string>> samples;

    std::vector<PeekedMessage> messages;  // what a second look found; empty: there was none
};

// Whether any sample holds a blank text, which in XML and FIX may stand for no value at all.
bool holdsBlanks(const Discovery& discovery);

// Whether the second look found the samples, one for one and value for value; of a topic it never does, even
// where later messages are alike.
bool sawSamplesAgain(const Discovery& discovery, const Settings& settings);

struct ProposedColumn {
    std::string name;
    std::string type;
    bool key = false;
    std::string reason;  // why the type is not the one that the entry points answered; "": it is
};

struct Proposal {
    std::string streamName;
    std::vector<ProposedColumn> columns;
    std::vector<std::string> notes;  // sentences
    std::vector<std::pair<std::string, std::string>>
        connection;  // [connection] needs these: name, TOML value
};

// `streamName` is the user's choice, "" for none.
Proposal propose(const Discovery& discovery, const Settings& settings, const std::string& streamName);

}  // namespace host
