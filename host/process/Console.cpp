#include "host/process/Console.h"

#include <unistd.h>

#include <mutex>

#include "host/process/SafeText.h"
#include "host/process/Secrets.h"
#include "host/values/ModifiedUtf8.h"
#include "host/values/Text.h"

namespace host {

namespace {

constexpr size_t kLongestLine = 4000;
constexpr std::string_view kEraseLine = "\r\x1b[K";

std::mutex terminalLock;  // guards standard error and what follows
std::string shownStatus;  // "" when there is none

// Nobody is left to be told when standard error itself cannot be written.
void put(const std::string& text) {
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
}

// The cursor goes back to the line's begin: what others print, the JVM say, then replaces the status.
std::string statusLine() { return shownStatus.empty() ? std::string() : shownStatus + '\r'; }

std::string eraseStatus() { return shownStatus.empty() ? std::string() : std::string(kEraseLine); }

}  // namespace

std::string shown(std::string_view text) { return oneLine(withoutSecrets(text)); }

void say(std::string_view text) {
    const std::string line = shown(text) + '\n';
    const std::lock_guard guard(terminalLock);
    put(eraseStatus() + line + statusLine());
}

void sayModified(const std::string& prefix, const char* text) {
    std::string line = prefix;
    const std::string whole = withoutSecrets(text);  // before a cut hides what it is known by
    appendUtf8(wholeCharacters(whole, kLongestLine), line);
    if (whole.size() > kLongestLine) line += "... (" + std::to_string(whole.size()) + " bytes)";
    say(line);
}

bool canShowStatus() { return ::isatty(STDERR_FILENO) == 1; }

void showStatus(std::string_view text) {
    const std::lock_guard guard(terminalLock);
    shownStatus = text;
    put(std::string(kEraseLine) + statusLine());
}

void hideStatus() {
    const std::lock_guard guard(terminalLock);
    if (!shownStatus.empty()) put(std::string(kEraseLine));
    shownStatus.clear();
}

}  // namespace host
