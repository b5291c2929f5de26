// Texts of others on a terminal.
#pragma once

#include <string>
#include <string_view>

namespace host {

// The UTF-8 text in one line: as escapes, \n or \x1B say, each character that would break the line or steer
// the terminal, which are the control characters, the separators of lines, and those that turn the direction
// of writing. A byte that is no character's counts as the character of its number.
std::string oneLine(std::string_view utf8);

}  // namespace host
