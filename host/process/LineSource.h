// The lines of a file or of standard input, on whose next one nobody has to wait longer than wanted.
#pragma once

#include <atomic>
#include <string>

namespace host {

inline constexpr char kStandardInput[] = "-";

// Belongs to one thread; stop may come from any other.
class LineSource {
public:
    // `file` is a path, a pipe's too, or "-". Throws Failure when it cannot be read.
    explicit LineSource(std::string file);
    ~LineSource();
    LineSource(const LineSource&) = delete;
    LineSource& operator=(const LineSource&) = delete;

    // The next line without its newline, as it stands otherwise. Waits for one where the input is open but
    // empty. False, with `line` unspecified: there is no further one, or stop was called. Throws Failure,
    // also of a line that is longer than any message.
    bool next(std::string& line);
    // The same for all that is left, newlines included; false only after stop.
    bool rest(std::string& text);

    // Starts over at the first line. Throws Failure for what can be read only once.
    void rewind();

    // Ends a next or rest that waits and all later ones, for good.
    void stop();

    // For messages: the file's name, and the same with the number of the line that next gave last.
    std::string name() const;
    std::string place() const { return placeOf(number_); }

private:
    std::string placeOf(long long line) const { return name() + ":" + std::to_string(line); }
    bool refill();  // false: the input's end, or stop

    const std::string file_;
    int input_ = -1;
    int wakeUp_ = -1;
    std::atomic<bool> isStopped_{false};
    std::string buffer_;
    size_t at_ = 0;  // where in buffer_ the unread begins
    long long number_ = 0;
};

}  // namespace host
