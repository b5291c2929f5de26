// How a message that became no row is told.
#pragma once

#include <string>
#include <string_view>

#include "host/values/Reject.h"

namespace host {

// The sentence for the user; `keptIn` follows "was kept in", as in `kel_rejected (id 12)`, "": it was kept
// nowhere.
std::string rejectSentence(std::string_view messageId, const Reject& reject, std::string_view keptIn = {});

}  // namespace host
