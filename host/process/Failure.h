// How a command fails: one sentence and an exit code.
#pragma once

#include <stdexcept>
#include <string>

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

}  // namespace host
