#include "host/rows/Rejects.h"

namespace host {

const char* nameOf(Stage stage) {
    switch (stage) {
        case Stage::kReceive:
            return "receive";
        case Stage::kParse:
            return "parse";
        case Stage::kType:
            return "type";
        case Stage::kSink:
            break;
    }
    return "sink";
}

std::string rejectSentence(std::string_view messageId, const Reject& reject, std::string_view keptIn) {
    std::string sentence = "Message ";
    sentence.append(messageId.empty() ? "without an ID" : messageId).append(" was ");
    if (keptIn.empty()) {
        sentence += "rejected";
    } else {
        sentence.append("kept in ").append(keptIn);
    }
    sentence.append(": ").append(reject.text);
    if (!sentence.ends_with('.')) sentence += '.';
    return sentence;
}

}  // namespace host
