#include "tests/endtoend/HostProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <sstream>

namespace endtoend {

Scratch::Scratch() {
    std::string name = (std::filesystem::temp_directory_path() / "kel-test-XXXXXX").string();
    root_ = mkdtemp(name.data());
}

Scratch::~Scratch() {
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
}

std::string Scratch::write(const std::string& name, const std::string& text) const {
    std::ofstream(path(name)) << text;
    return path(name);
}

std::string read(const std::string& path) {
    std::stringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

size_t lineCount(const std::string& path) {
    const std::string text = read(path);
    return static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
}

HostProcess::HostProcess(const Scratch& scratch, const std::string& name, const std::vector<std::string>& arguments)
    : out_(scratch.path(name + ".out")), err_(scratch.path(name + ".err")) {
    std::vector<std::string> all = {KEL_HOST};
    all.insert(all.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& argument : all) argv.push_back(argument.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, out_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, err_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (posix_spawn(&pid_, argv[0], &files, nullptr, argv.data(), environ) != 0) pid_ = -1;
    posix_spawn_file_actions_destroy(&files);
}

HostProcess::~HostProcess() {
    if (pid_ <= 0) return;
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
}

void HostProcess::signal(int number) const { kill(pid_, number); }

int HostProcess::wait(Seconds limit) {
    int status = 0;
    if (!within(limit, [&] { return waitpid(pid_, &status, WNOHANG) == pid_; })) return -1;
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

bool HostProcess::waitForError(const std::string& text, Seconds limit) const {
    return within(limit, [&] { return errors().find(text) != std::string::npos; });
}

bool HostProcess::waitForRows(size_t count, Seconds limit) const {
    return within(limit, [&] { return lineCount(out_) >= count; });
}

}  // namespace endtoend
