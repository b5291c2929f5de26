// What an SQLSTATE means for a writer.
#pragma once

#include <string>

namespace host {

// It may go well later, without a change by anybody here.
bool isPassing(const std::string& code);

// The row of the statement is at fault, and it alone.
bool isOfRow(const std::string& code);

// Why there is nothing to be had, where the server's own text would not say it as plainly.
std::string reasonOf(const std::string& code, const std::string& text);

// The first line of a message, without what the server or the library puts before it.
std::string plainMessage(const char* message);

}  // namespace host
