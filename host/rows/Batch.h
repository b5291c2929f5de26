// The messages taken between two settlings with the provider: what became of each, and what only the
// connector knows of them.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/values/ServerRow.h"

namespace host {

// Where a message failed to become a row that is kept.
enum class Stage {
    kReceive,  // the connector refused it
    kParse,    // it is not laid out as the data format wants, or for another stream
    kType,     // a field is no value of its column's type
    kSink,     // the database refused its row
};

const char* nameOf(Stage stage);

// Why a message is no row. Texts are in UTF-8.
struct Reject {
    Stage stage = Stage::kParse;
    std::string key;     // of the message catalogue, or the database's own code; "": none
    std::string text;    // one sentence without the message's ID
    std::string column;  // "": no column is to blame
};

struct BatchMessage {
    std::unique_ptr<ServerRow> row;  // null: there is none
    std::optional<Reject> reject;    // neither row nor reject: passed over by rule
};

// A header or property of a message: for a header `type` is "header", for a property Java's name of its type.
struct EnvelopeField {
    std::string name;
    std::string type;
    std::string value;
};

// A message as it came, to be kept and sent again.
struct MessageCopy {
    std::string kind;                 // text, bytes, object, stream, map or none
    std::optional<std::string> body;  // bytes; none: it cannot be had
    std::vector<EnvelopeField> envelope;
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
