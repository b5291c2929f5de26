// String helpers shared by the server's adapters.
//
// All are stateless and re-entrant; two threads must not pass the same string object at once. Arguments are
// non-const references because callers are promised no more: only those named "in place" or "out" change.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace MORVEX::Kel {

// Lower-cases every byte in place by the process' C locale (no multi-byte awareness); returns `text`.
std::string& toLowerString(std::string& text);

// Splits at the first delimiter; without one, `first` (out) is all of `source` and `second` (out) is empty.
void splitString(std::string& source, char delimiter, std::string& first, std::string& second);

// Appends every field of `source`, empty ones included, to `fields` (not cleared first) and returns the size
// that `fields` has then. An empty source is one empty field; a NUL byte ends the source. `source` must not
// be an element of `fields`.
size_t splitString(std::string& source, char delimiter, std::vector<std::string>& fields);

// Sets `joined` (out) to the elements with the separator between them.
void joinString(std::vector<std::string>& elements, char separator, std::string& joined);

// In place: tabs become spaces, outer spaces go, inner runs of spaces become one. Other control characters,
// line feeds among them, stay.
void trimWhiteSpace(std::string& text);

// In place: removes leading and trailing spaces (tabs stay); returns a copy of the result.
std::string trimSpace(std::string& text);

// Returns the text that printf would write, of any length.
std::string strprintf(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Tells whether the POSIX extended regular expression matches anywhere in the subject, with regard to case;
// false for a pattern that does not compile.
bool regexMatch(std::string& pattern, std::string& subject);

}  // namespace MORVEX::Kel
