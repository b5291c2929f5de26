// Standard error, one whole line at a time.
#pragma once

#include <string>
#include <string_view>

namespace host {

// The text in one line: as escapes what would break the line or steer the terminal.
std::string oneLine(std::string_view text);

// What this host says for itself, in one line and without passwords.
std::string shown(std::string_view text);

// Writes the text so as one line to standard error. Any thread.
void say(std::string_view text);

// The same for a text in modified UTF-8, as the adapter's are; a very long one is cut and its length told.
void sayModified(const std::string& prefix, const char* text);

// The last line of the terminal, renewed in place; lines that are said push it down. Does nothing where
// standard error is no terminal.
void showStatus(std::string_view text);
void hideStatus();
bool canShowStatus();

}  // namespace host
