// Where rows and other results go: a file or standard output, written through at once.
#pragma once

#include <atomic>
#include <string>
#include <string_view>

#include "host/process/RowFile.h"

namespace host {

// Belongs to one thread; stop may come from any other.
class Output {
public:
    // "" is standard output, which from then on is this object's alone: whatever else this process prints
    // there, such as the JVM, comes out on standard error. `rows`: how they look; null for other results. A
    // file is appended to, because a run that takes up a durable subscription continues it; a row at its end
    // that was not written whole is cut off. Waits for a pipe's reader. Throws Failure.
    explicit Output(const std::string& file = "", const RowShape* rows = nullptr);
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    // All of the text, rows being written one by one, is handed to the system when this returns. Waits for a
    // reader that is behind. Throws Failure; a file then ends where it did before.
    void write(const std::string& text);

    // From now on a write fails that had to wait for a few seconds.
    void stop();

    bool isAtStart() const;  // nothing stands in the file yet
    bool isTerminal() const { return isTerminal_; }

private:
    enum class Kind { kFile, kSocket, kOther };

    void awaitRoom();
    ssize_t writeSome(std::string_view text);
    void takeBack(size_t count);
    [[noreturn]] void fail(const std::string& sentence) const;

    const std::string name_;
    const bool isOfRows_;
    int descriptor_;
    int wakeUp_ = -1;
    Kind kind_ = Kind::kOther;
    bool isTerminal_ = false;
    std::atomic<bool> isStopped_{false};
};

}  // namespace host
