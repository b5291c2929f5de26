// Texts of others as every database takes them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/values/Reject.h"

namespace host {

// In UTF-8 and in one line; U+FFFD stands for each byte that was no part of a character.
std::string storedLine(std::string_view text);

// Those of a text, of which the last may lack its end.
std::vector<std::string> linesOf(const std::string& text);

// Appends the bytes that the hexadecimal digits are of.
void appendHexBytes(std::string_view digits, std::string& out);

// Headers and properties as a JSON list of objects with name, type and value.
std::string envelopeText(const std::vector<EnvelopeField>& fields);
std::vector<EnvelopeField> envelopeFields(const std::string& text);  // what is none is left out

}  // namespace host
