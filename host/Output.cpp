#include "host/Output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "host/Console.h"

namespace host {

namespace {

constexpr int kNewFileMode = 0666;  // less the user's mask

std::string reason() { return std::string(": ") + std::strerror(errno) + "."; }

}  // namespace

Output::Output(const std::string& file) : name_(file.empty() ? "standard output" : file) {
    if (file.empty()) {
        descriptor_ = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    } else {
        descriptor_ = ::open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, kNewFileMode);
    }
    if (descriptor_ < 0) throw Failure("The rows cannot be written to " + name_ + reason());
    ::dup2(STDERR_FILENO, STDOUT_FILENO);
}

Output::~Output() { ::close(descriptor_); }

void Output::write(const std::string& text) {
    for (size_t done = 0; done < text.size();) {
        const ssize_t count = ::write(descriptor_, text.data() + done, text.size() - done);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throw Failure("The rows cannot be written to " + name_ + reason());
        done += static_cast<size_t>(count);
    }
}

bool Output::isAtStart() const {
    struct stat status;
    return ::fstat(descriptor_, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size == 0;
}

bool Output::isTerminal() const { return ::isatty(descriptor_) == 1; }

}  // namespace host
