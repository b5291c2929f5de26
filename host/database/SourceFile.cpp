#include "host/database/SourceFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <array>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "host/process/Failure.h"

namespace host {

namespace {

constexpr int kSignsPerLease = 4;
constexpr int kMode = 0666;  // less the user's mask

// Other letters than these would make it another folder, or none that people can name.
std::string fileNameOf(const std::string& source) {
    std::string name;
    for (const char c : source) {
        std::array<char, 4> escape;
        const auto byte = static_cast<unsigned char>(c);
        if (std::isalnum(byte) != 0 || c == '-' || c == '_') {
            name += c;
        } else {
            std::snprintf(escape.data(), escape.size(), "%%%02X", unsigned{byte});
            name += escape.data();
        }
    }
    return name;
}

// What cannot be followed stays as it is.
std::string withoutLinks(const std::string& path) {
    std::error_code error;
    const std::filesystem::path plain = std::filesystem::canonical(path, error);
    return error ? path : plain.string();
}

int openFile(const std::string& path) { return ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kMode); }

}  // namespace

SourceFile::SourceFile(const std::string& database, const std::string& source, std::int64_t leaseSeconds)
    : database_(database), ending_('.' + fileNameOf(source) + ".lock"), lease_(leaseSeconds) {}

SourceFile::~SourceFile() { unlock(); }

void SourceFile::fail() const {
    throw Failure("The lock file " + path_ + " cannot be written: " + std::generic_category().message(errno) +
                  '.');
}

bool SourceFile::isInPlace() const {
    struct stat held, named;
    return ::fstat(descriptor_, &held) == 0 && ::stat(path_.c_str(), &named) == 0 &&
           held.st_ino == named.st_ino && held.st_dev == named.st_dev;
}

Holder SourceFile::holder() const {
    Holder other;
    std::ifstream(path_) >> other.process >> other.since;
    return other;
}

bool SourceFile::isDead() const {
    struct stat status;
    return ::stat(path_.c_str(), &status) == 0 && std::time(nullptr) - status.st_mtime > lease_.count();
}

void SourceFile::write() const {
    const std::string text = std::to_string(::getpid()) + ' ' + std::to_string(std::time(nullptr)) + '\n';
    if (::ftruncate(descriptor_, 0) != 0 || ::pwrite(descriptor_, text.data(), text.size(), 0) < 0) fail();
}

// Of two who do so at once the later one has the file; the other sees that at its next look.
bool SourceFile::replace() {
    const std::string fresh = path_ + '.' + std::to_string(::getpid());
    descriptor_ = openFile(fresh);
    if (descriptor_ < 0 || ::flock(descriptor_, LOCK_EX | LOCK_NB) != 0) fail();
    write();
    if (::rename(fresh.c_str(), path_.c_str()) != 0) fail();
    return isInPlace();
}

std::optional<Holder> SourceFile::lock() {
    if (path_.empty()) path_ = withoutLinks(database_) + ending_;
    if (descriptor_ >= 0 && isInPlace()) return std::nullopt;
    unlock();
    descriptor_ = openFile(path_);
    if (descriptor_ < 0) fail();
    const bool isLocked = ::flock(descriptor_, LOCK_EX | LOCK_NB) == 0 && isInPlace();
    if (!isLocked) {
        unlock();
        if (!isDead() || !replace()) {
            unlock();
            return holder();
        }
    }
    write();
    touched_ = Clock::now();
    return std::nullopt;
}

bool SourceFile::signOfLife() {
    if (descriptor_ < 0) return false;
    const Clock::time_point now = Clock::now();
    if (now - touched_ < std::chrono::milliseconds(lease_) / kSignsPerLease) return true;
    if (!isInPlace()) return false;
    ::futimens(descriptor_, nullptr);
    touched_ = now;
    return true;
}

void SourceFile::unlock() {
    if (descriptor_ >= 0) ::close(descriptor_);
    descriptor_ = -1;
}

}  // namespace host
