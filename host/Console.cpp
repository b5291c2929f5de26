#include "host/Console.h"

#include <unistd.h>

#include <array>
#include <cstdio>
#include <mutex>

#include "host/toolkit/ModifiedUtf8.h"

namespace host {

namespace {

// A message's text may be part of a line: it must neither break it nor steer the terminal.
std::string oneLine(std::string_view text) {
    std::string line;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7F) {
            line += c;
        } else if (c == '\n') {
            line += "\\n";
        } else if (c == '\t') {
            line += "\\t";
        } else {
            std::array<char, 8> escape;
            std::snprintf(escape.data(), escape.size(), "\\x%02X", byte);
            line += escape.data();
        }
    }
    return line;
}

}  // namespace

void say(std::string_view text) {
    static std::mutex lock;
    const std::string line = oneLine(text) + '\n';
    const std::lock_guard guard(lock);
    // Nobody is left to be told when standard error itself cannot be written.
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
}

void sayModified(const std::string& prefix, const char* text) { say(prefix + toUtf8(text)); }

}  // namespace host
