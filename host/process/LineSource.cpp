#include "host/process/LineSource.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <system_error>

#include "host/process/Failure.h"

namespace host {

namespace {

constexpr size_t kChunk = 1 << 16;
constexpr size_t kLongest = 64 << 20;  // what the connector receives by default

[[noreturn]] void fail(const std::string& name, int error) {
    throw Failure(name + " cannot be read: " + std::generic_category().message(error) +
                  "; it must be a file or pipe with messages.");
}

[[noreturn]] void failAsTooLong(const std::string& place) {
    throw Failure(place + ": this is longer than " + std::to_string(kLongest) +
                  " bytes, the most that is sent as one message.");
}

}  // namespace

LineSource::LineSource(std::string file) : file_(std::move(file)) {
    // Opening a pipe otherwise waits for its writer, where no stop could reach it.
    constexpr int kMode = O_RDONLY | O_CLOEXEC | O_NONBLOCK;
    input_ = file_ == kStandardInput ? STDIN_FILENO : ::open(file_.c_str(), kMode);
    struct stat status {};
    if (input_ < 0 || ::fstat(input_, &status) != 0) fail(name(), errno);
    if ((::fcntl(input_, F_GETFL) & O_ACCMODE) == O_WRONLY) fail(name(), EBADF);
    if (S_ISDIR(status.st_mode)) fail(name(), EISDIR);
    wakeUp_ = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (wakeUp_ < 0) fail(name(), errno);
}

LineSource::~LineSource() {
    if (input_ != STDIN_FILENO) ::close(input_);
    ::close(wakeUp_);
}

std::string LineSource::name() const { return file_ == kStandardInput ? "standard input" : file_; }

bool LineSource::next(std::string& line) {
    size_t searched = at_;
    size_t end = 0;
    while ((end = buffer_.find('\n', searched)) == std::string::npos) {
        searched = buffer_.size() - at_;
        if (searched > kLongest) failAsTooLong(placeOf(number_ + 1));
        if (refill()) continue;
        if (isStopped_ || at_ == buffer_.size()) return false;
        end = buffer_.size();  // the last line needs no newline
        break;
    }
    if (isStopped_) return false;
    if (end - at_ > kLongest) failAsTooLong(placeOf(number_ + 1));
    line.assign(buffer_, at_, end - at_);
    at_ = std::min(end + 1, buffer_.size());
    ++number_;
    return true;
}

bool LineSource::rest(std::string& text) {
    while (refill()) {
        if (buffer_.size() > kLongest) failAsTooLong(name());
    }
    text.assign(buffer_, at_);
    at_ = buffer_.size();
    return !isStopped_;
}

// Moves the unread to the buffer's begin and appends to it.
bool LineSource::refill() {
    buffer_.erase(0, at_);
    at_ = 0;
    std::array<pollfd, 2> either{{{input_, POLLIN, 0}, {wakeUp_, POLLIN, 0}}};
    while (!isStopped_) {
        if (::poll(either.data(), either.size(), -1) < 0 && errno != EINTR) fail(name(), errno);
        if (isStopped_) break;
        const size_t size = buffer_.size();
        buffer_.resize(size + kChunk);
        const ssize_t count = ::read(input_, buffer_.data() + size, kChunk);
        const int error = errno;
        buffer_.resize(size + static_cast<size_t>(std::max<ssize_t>(count, 0)));
        if (count >= 0) return count > 0;
        if (error != EINTR && error != EAGAIN) fail(name(), error);
    }
    return false;
}

void LineSource::rewind() {
    if (::lseek(input_, 0, SEEK_SET) != 0)
        throw Failure(name() + " can be read only once; --repeat needs a file.");
    buffer_.clear();
    at_ = 0;
    number_ = 0;
}

void LineSource::stop() {
    isStopped_ = true;
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(wakeUp_, &one, sizeof one);  // the first suffices
}

}  // namespace host
