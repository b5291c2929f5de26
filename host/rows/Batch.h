// The messages taken between two settlings with the provider: what became of each, and what only the
// connector knows of them.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/values/Reject.h"
#include "host/values/ServerRow.h"

namespace host {

struct BatchMessage {
    std::unique_ptr<ServerRow> row;  // null: there is none
    std::optional<Reject> reject;    // neither row nor reject: passed over by rule
};

// What the connector holds of a batch's messages, which are numbered as in the batch. Belongs to the reading
// thread.
class Envelopes {
public:
    virtual ~Envelopes() = default;

    // The message's IDs; "" where the provider gives none.
    virtual std::vector<std::string> ids() = 0;

    // Of which kept message each is a copy sent again, "" for none; empty when none of them is.
    virtual std::vector<std::string> replayOf() = 0;

    virtual MessageCopy copyOf(size_t message) = 0;
};

struct Batch {
    std::vector<BatchMessage> messages;
    Envelopes* envelopes = nullptr;  // null: nobody is asked
};

}  // namespace host
