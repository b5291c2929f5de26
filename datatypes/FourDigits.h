// The numbers 0 to 9999 as text, for writers of digits.
#pragma once

#include <array>

namespace PlixTypes {

// Entry i is i in exactly four digits, "0000" to "9999", without a NUL.
extern const std::array<char[4], 10000> four2ascii;

}  // namespace PlixTypes
