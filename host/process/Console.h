// Standard error, one whole line at a time.
#pragma once

#include <string>
#include <string_view>

namespace host {

// What this host says for itself, in one line and without passwords.
std::string shown(std::string_view text);

// Writes the text so as one line to standard error. Any thread.
void say(std::string_view text);

// The same for a text in modified UTF-8, as the adapter's are; a very long one is cut and its length told.
void sayModified(const std::string& prefix, const char* text);

// The last line of the terminal, renewed in place; lines that are said push it down. Not shown where
// standard error is no terminal, which is asked for once, ahead.
bool canShowStatus();
void showStatus(std::string_view text);
void hideStatus();

}  // namespace host
