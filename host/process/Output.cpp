#include "host/process/Output.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdint>
#include <system_error>
#include <thread>

#include "host/process/Console.h"
#include "host/process/Failure.h"

namespace host {

namespace {

constexpr int kNewFileMode = 0666;  // less the user's mask
constexpr std::chrono::seconds kGrace(3);

std::string cannotWrite(const std::string& name, int error) {
    return "The output cannot be written to " + name + ": " + std::generic_category().message(error);
}

bool isPipe(const std::string& file) {
    struct stat status;
    return ::stat(file.c_str(), &status) == 0 && S_ISFIFO(status.st_mode);
}

// A pipe without a reader is not waited for in the system's call, where no signal could end that.
int openFile(const std::string& file) {
    constexpr int kMode = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NONBLOCK;
    constexpr std::chrono::milliseconds kLookAgain(20);
    constexpr int kLooksBeforeWord = 50;
    for (int looks = 0;; ++looks) {
        const int descriptor = ::open(file.c_str(), kMode, kNewFileMode);
        const int error = errno;
        if (descriptor >= 0 || error != ENXIO || !isPipe(file)) {
            errno = error;
            return descriptor;
        }
        if (looks == kLooksBeforeWord) say("The pipe " + file + " has no reader; the command waits for one.");
        std::this_thread::sleep_for(kLookAgain);
    }
}

}  // namespace

Output::Output(const std::string& file, const RowShape* rows)
    : name_(file.empty() ? "standard output" : file),
      isOfRows_(rows != nullptr),
      descriptor_(file.empty() ? ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)
                               : openFile(file)) {
    const int flags = descriptor_ < 0 ? -1 : ::fcntl(descriptor_, F_GETFL);
    struct stat status;
    if (flags < 0 || ::fstat(descriptor_, &status) != 0) throw Failure(cannotWrite(name_, errno) + ".");
    if ((flags & O_ACCMODE) == O_RDONLY) throw Failure(cannotWrite(name_, EBADF) + ".");
    wakeUp_ = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (wakeUp_ < 0) throw Failure(cannotWrite(name_, errno) + ".");
    kind_ = S_ISREG(status.st_mode) ? Kind::kFile : S_ISSOCK(status.st_mode) ? Kind::kSocket : Kind::kOther;
    isTerminal_ = ::isatty(descriptor_) == 1;
    const bool isContinued = kind_ == Kind::kFile && (flags & O_APPEND) != 0;
    if (isContinued && isOfRows_) cutTornRow(descriptor_, name_, *rows);
    ::dup2(STDERR_FILENO, STDOUT_FILENO);
}

Output::~Output() {
    ::close(descriptor_);
    ::close(wakeUp_);
}

void Output::fail(const std::string& sentence) const {
    throw Failure(sentence + (isOfRows_ ? "; the row's message comes again." : "."));
}

void Output::write(const std::string& text) {
    for (size_t done = 0; done < text.size();) {
        if (kind_ != Kind::kFile) awaitRoom();
        const ssize_t count = writeSome(std::string_view(text).substr(done));
        if (count >= 0) {
            done += static_cast<size_t>(count);
        } else if (const int error = errno; error != EINTR && error != EAGAIN) {
            takeBack(done);
            fail(cannotWrite(name_, error));
        }
    }
}

// At most as much as goes without waiting where there is any room. Others may share the open file, so it is
// not made one that never waits.
ssize_t Output::writeSome(std::string_view text) {
    if (kind_ == Kind::kFile) return ::write(descriptor_, text.data(), text.size());
    text = text.substr(0, PIPE_BUF);
    if (kind_ == Kind::kOther) return ::write(descriptor_, text.data(), text.size());
    return ::send(descriptor_, text.data(), text.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
}

void Output::awaitRoom() {
    std::array<pollfd, 2> either{{{descriptor_, POLLOUT, 0}, {wakeUp_, POLLIN, 0}}};
    constexpr int kGraceMillis = std::chrono::milliseconds(kGrace).count();
    for (;;) {
        const bool isLast = isStopped_;
        const int ready = ::poll(either.data(), isLast ? 1 : 2, isLast ? kGraceMillis : -1);
        if (ready < 0 && errno != EINTR) fail(cannotWrite(name_, errno));
        if (ready > 0 && either[0].revents != 0) return;  // an error too: the write tells which
        if (ready == 0)
            fail("The reader of " + name_ + " took nothing for " + std::to_string(kGrace.count()) +
                 " s after the stop");
    }
}

// What a failed write left of a row would stand before the next one in its line. What others wrote behind it
// stays.
void Output::takeBack(size_t count) {
    if (kind_ != Kind::kFile || count == 0) return;
    struct stat status;
    const off_t end = ::lseek(descriptor_, 0, SEEK_CUR);
    const off_t begin = end - static_cast<off_t>(count);
    if (::fstat(descriptor_, &status) != 0 || status.st_size != end) return;
    if (::ftruncate(descriptor_, begin) == 0) ::lseek(descriptor_, begin, SEEK_SET);
}

void Output::stop() {
    isStopped_ = true;
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(wakeUp_, &one, sizeof one);  // the first suffices
}

bool Output::isAtStart() const {
    struct stat status;
    return kind_ != Kind::kFile || ::fstat(descriptor_, &status) != 0 || status.st_size == 0;
}

}  // namespace host
