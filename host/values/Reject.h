// A message that became no row: why, and the message itself.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// Where a message failed to become a row that is kept.
enum class Stage {
    kReceive,  // the connector refused it
    kParse,    // it is not laid out as the data format wants, or for another stream
    kType,     // a field is no value of its column's type
    kSink,     // the database refused its row
};

const char* nameOf(Stage stage);
Stage stageOf(std::string_view name);  // kSink for a name of none

// Why a message is no row. Texts are in UTF-8.
struct Reject {
    Stage stage = Stage::kParse;
    std::string key;     // of the message catalogue, or the database's own code; "": none
    std::string text;    // one sentence without the message's ID
    std::string column;  // "": no column is to blame
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

}  // namespace host
