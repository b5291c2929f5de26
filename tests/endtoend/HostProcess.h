// A kel-adapter-host in a process of its own, with its two output streams in files.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

namespace endtoend {

using Seconds = std::chrono::duration<double>;

// A directory that is gone with the test.
class Scratch {
public:
    Scratch();
    ~Scratch();
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    std::string path(const std::string& name) const { return (root_ / name).string(); }
    std::string write(const std::string& name, const std::string& text) const;  // returns the file's path

private:
    std::filesystem::path root_;
};

std::string read(const std::string& path);  // "" when it is not there
size_t lineCount(const std::string& path);

// Whether the condition comes true within the time.
template <typename Condition>
bool within(Seconds limit, Condition condition) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

class HostProcess {
public:
    // Starts the host; standard output and error go to NAME.out and NAME.err of the scratch directory.
    HostProcess(const Scratch& scratch, const std::string& name, const std::vector<std::string>& arguments);
    ~HostProcess();  // kills what still runs
    HostProcess(const HostProcess&) = delete;
    HostProcess& operator=(const HostProcess&) = delete;

    void signal(int number) const;
    // The exit status, 128 + the signal that ended it, or -1 when it still runs after the time.
    int wait(Seconds limit = Seconds(60));
    bool waitForError(const std::string& text, Seconds limit = Seconds(60)) const;  // on standard error
    bool waitForRows(size_t count, Seconds limit = Seconds(60)) const;              // lines on standard output

    std::string output() const { return read(out_); }
    std::string errors() const { return read(err_); }
    pid_t pid() const { return pid_; }

private:
    std::string out_;
    std::string err_;
    pid_t pid_ = -1;
};

}  // namespace endtoend
