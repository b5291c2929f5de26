// How a message that became no row is told.
#pragma once

#include <string>
#include <string_view>

#include "host/rows/Batch.h"

namespace host {

// The sentence for the user; `keptIn` follows "was kept in", as in `kel_rejected (id 12)`, "": it was kept
// nowhere.
std::string rejectSentence(std::string_view messageId, const Reject& reject, std::string_view keptIn = {});

// The message to be kept in place of a row. Throws Failure where the memory does not suffice for its body:
// settled without it, the message would be gone.
MessageCopy copyToKeep(Envelopes& envelopes, size_t message, std::string_view messageId);

}  // namespace host
