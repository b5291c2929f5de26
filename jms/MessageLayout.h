// How a row lies in a message that is an array of texts, or a CSV text: fields in column order, with the
// prefix behind the stream's name and the opcode.
#pragma once

namespace jms {

inline constexpr int kPrefixLength = 2;  // stream name, opcode

}  // namespace jms
