// Standard error, one whole line at a time, and how a command fails.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace host {

inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;
inline constexpr int kUsage = 2;
inline constexpr int kBadConfiguration = 78;
inline constexpr int kLeftAtOnce = 130;

// Ends a command: one sentence for the user and the program's exit code.
class Failure : public std::runtime_error {
public:
    explicit Failure(const std::string& sentence, int exitCode = kFailed)
        : std::runtime_error(sentence), code(exitCode) {}
    const int code;
};

// Writes the text as one line to standard error; control characters are shown as escapes. Any thread.
void say(std::string_view text);

// The same for a text in modified UTF-8, as the adapter's are.
void sayModified(const std::string& prefix, const char* text);

}  // namespace host
