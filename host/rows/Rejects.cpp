#include "host/rows/Rejects.h"

#include "host/values/Text.h"

namespace host {

namespace {

constexpr size_t kLongestText = 4000;  // a reason may hold the whole message

}  // namespace

std::string rejectSentence(std::string_view messageId, const Reject& reject, std::string_view keptIn) {
    std::string sentence = messageId.empty() ? "A message" : "Message " + std::string(messageId);
    if (keptIn.empty()) {
        sentence += " was rejected: ";
    } else {
        sentence.append(" was kept in ").append(keptIn).append(": ");
    }
    sentence += wholeCharacters(reject.text, kLongestText);
    if (reject.text.size() > kLongestText)
        sentence += "... (" + std::to_string(reject.text.size()) + " bytes)";
    if (!sentence.ends_with('.')) sentence += '.';
    return sentence;
}

}  // namespace host
