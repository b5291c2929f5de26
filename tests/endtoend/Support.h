// A kel-adapter-host in a process of its own, with its output in files; configurations, messages and a broker.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace endtoend {

using Texts = std::vector<std::string>;
using Seconds = std::chrono::duration<double>;

// "" when it is not there.
inline std::string read(const std::string& path) {
    std::stringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

inline size_t lineCount(const std::string& path) {
    const std::string text = read(path);
    return static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
}

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

// A directory that is gone with the test.
class Scratch {
public:
    Scratch() : root_(::mkdtemp((std::filesystem::temp_directory_path() / "kel-test-XXXXXX").string().data())) {}
    ~Scratch() { std::filesystem::remove_all(root_); }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    std::string path(const std::string& name) const { return root_ + "/" + name; }
    std::string write(const std::string& name, const std::string& text) const {
        std::ofstream(path(name)) << text;
        return path(name);
    }

private:
    const std::string root_;
};

class HostProcess {
public:
    // Standard output and error go to files of the scratch directory that are named for the subcommand. `setup`: what a shell does to
    // the process first, such as closing one of them.
    HostProcess(const Scratch& scratch, Texts arguments, const std::string& setup = "")
        : out_(scratch.path(arguments[0] + ".out")), err_(scratch.path(arguments[0] + ".err")) {
        arguments.insert(arguments.begin(), KEL_HOST);
        if (!setup.empty()) arguments.insert(arguments.begin(), {"/bin/sh", "-c", setup + "; exec \"$0\" \"$@\""});
        std::vector<char*> argv;
        for (std::string& argument : arguments) argv.push_back(argument.data());
        argv.push_back(nullptr);
        posix_spawn_file_actions_t files;
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, out_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        posix_spawn_file_actions_addopen(&files, STDERR_FILENO, err_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        if (posix_spawn(&pid_, argv[0], &files, nullptr, argv.data(), environ) != 0) pid_ = -1;
        posix_spawn_file_actions_destroy(&files);
    }
    ~HostProcess() {
        if (pid_ <= 0) return;
        signal(SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    HostProcess(const HostProcess&) = delete;
    HostProcess& operator=(const HostProcess&) = delete;

    void signal(int number) const { ::kill(pid_, number); }
    void limit(__rlimit_resource resource, const rlimit& limit) const { ::prlimit(pid_, resource, &limit, nullptr); }
    // The exit status, 128 + the signal that ended it, or -1 when it still runs after the time.
    int wait(Seconds limit = Seconds(60)) {
        int status = 0;
        if (!within(limit, [&] { return ::waitpid(pid_, &status, WNOHANG) == pid_; })) return -1;
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    bool isReady() const {
        return within(Seconds(60), [&] { return errors().find("ready") != std::string::npos; });
    }
    std::string output() const { return read(out_); }
    std::string errors() const { return read(err_); }

private:
    const std::string out_;
    const std::string err_;
    pid_t pid_ = -1;
};

// A pipe at which nobody reads, for a host's standard output.
class UnreadPipe {
public:
    UnreadPipe() { EXPECT_EQ(::pipe2(ends_.data(), O_CLOEXEC | O_NONBLOCK), 0); }
    ~UnreadPipe() {
        ::close(ends_[0]);
        ::close(ends_[1]);
    }
    UnreadPipe(const UnreadPipe&) = delete;
    UnreadPipe& operator=(const UnreadPipe&) = delete;

    std::string setup() const { return "exec >/proc/" + std::to_string(::getpid()) + "/fd/" + std::to_string(ends_[1]); }
    bool isFull() const {
        pollfd room{ends_[1], POLLOUT, 0};
        return ::poll(&room, 1, 0) == 0;
    }
    std::string taken() const {
        std::string text(1 << 16, ' ');
        text.resize(static_cast<size_t>(std::max<ssize_t>(::read(ends_[0], text.data(), text.size()), 0)));
        return text;
    }

private:
    std::array<int, 2> ends_;
};

// ActiveMQ at an address, without a destination.
inline std::string connection(const std::string& url) {
    return "[connection]\nconnectionFactory = \"ConnectionFactory\"\njndiURL = \"" + url +
           "\"\njndiContextFactory = \"org.apache.activemq.jndi.ActiveMQInitialContextFactory\"\n";
}

inline constexpr char kInJvm[] = "vm://localhost?broker.persistent=false&broker.useJmx=false";

// A stream Trades of Symbol (string, key), Shares (integer), Price (float); CSV from the queue, or topic, "test".
inline std::string trades(const std::string& url, const std::string& type = "QUEUE") {
    return R"([stream]
name = "Trades"
columns = [
  { name = "Symbol", type = "string", key = true }, { name = "Shares", type = "integer" }, { name = "Price", type = "float" } ]
)" + connection(url) +
           "dataFormat = \"CSV\"\ndelimiter = \",\"\ndestinationName = \"test\"\ndestinationType = \"" + type + "\"\n";
}

// A broker at a port that stays the same over restarts.
class Broker {
public:
    explicit Broker(const Scratch& scratch, bool isPersistent = false) : scratch_(scratch), isPersistent_(isPersistent) { start(); }
    void start() {
        Texts arguments = {"broker", "--port", port_};
        if (isPersistent_) arguments.insert(arguments.end(), {"--data", scratch_.path("broker-data")});
        process_ = std::make_unique<HostProcess>(scratch_, arguments);
        ASSERT_TRUE(within(Seconds(60), [&] { return process_->output().ends_with('\n'); })) << process_->errors();
        const std::string url = process_->output();
        port_ = std::to_string(std::atoi(url.c_str() + url.rfind(':') + 1));
    }
    void kill() {
        process_->signal(SIGKILL);
        process_->wait();
    }
    HostProcess& process() { return *process_; }
    const std::string& port() const { return port_; }
    std::string url() const { return "tcp://127.0.0.1:" + port_; }

private:
    const Scratch& scratch_;
    const bool isPersistent_;
    std::string port_ = "0";
    std::unique_ptr<HostProcess> process_;
};

// Sends the text's lines; fails the test when that fails.
inline void send(const Scratch& scratch, const std::string& config, const std::string& lines) {
    HostProcess sender(scratch, {"send", "--config", config, scratch.write("messages", lines)});
    ASSERT_EQ(sender.wait(Seconds(300)), 0) << sender.errors();
}

}  // namespace endtoend
