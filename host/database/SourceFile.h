// The lock of a source that is written into a database file.
#pragma once

#include <sys/stat.h>

#include <chrono>
#include <optional>
#include <string>

#include "host/database/DatabaseSession.h"
#include "host/process/Clock.h"

namespace host {

// A file beside the database that its writer holds locked, and touches as a sign of life. A lock falls with
// its process; from one that lives but shows no life for the lease, the source passes on by a new file in the
// old one's place. Every way to the database, by links too, is one to the same file.
class SourceFile {
public:
    SourceFile(const std::string& database, const std::string& source, std::int64_t leaseSeconds);
    ~SourceFile();
    SourceFile(const SourceFile&) = delete;
    SourceFile& operator=(const SourceFile&) = delete;

    // None: the lock is ours. Throws Failure where there can be no such file.
    std::optional<Holder> lock();
    // Whether the lock is still ours, as far as the last look at the file tells; there is one every now and
    // then.
    bool signOfLife();
    void unlock();

private:
    bool isInPlace() const;  // the file held is the one of that name
    Holder holder() const;
    bool isDead() const;
    bool replace();
    void write() const;
    [[noreturn]] void fail() const;

    const std::string database_;
    const std::string ending_;
    std::string path_;  // known with the first lock: then the database is there, wherever links lead
    const std::chrono::seconds lease_;
    int descriptor_ = -1;  // -1: not ours
    Clock::time_point touched_;
};

}  // namespace host
