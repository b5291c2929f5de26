// Texts of others on a terminal.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace host {

// The UTF-8 text with each character replaced that would break its line or steer the terminal: the control
// characters, the separators of lines, and those that turn the direction of writing. A byte that is no
// character's counts as the character of its number.
std::string withoutSteering(std::string_view utf8, const std::function<std::string(char32_t)>& replacement);

}  // namespace host
