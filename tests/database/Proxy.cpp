#include "tests/database/Proxy.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <filesystem>

namespace database {

namespace {

sockaddr_un addressOf(const std::string& file) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, file.c_str(), sizeof address.sun_path - 1);
    return address;
}

const sockaddr* plain(const sockaddr_un& address) { return reinterpret_cast<const sockaddr*>(&address); }

std::string newFolder() {
    std::string path = testing::TempDir() + "kel-proxy-XXXXXX";
    return ::mkdtemp(path.data());
}

constexpr int kLookMillis = 20;

}  // namespace

Proxy::Proxy(std::string server) : server_(std::move(server)), folder_(newFolder()) {
    listening_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_un address = addressOf(folder_ + "/.s.PGSQL.5432");
    EXPECT_EQ(::bind(listening_, plain(address), sizeof address), 0);
    ::listen(listening_, 8);
    thread_ = std::thread([this] { serve(); });
}

Proxy::~Proxy() {
    isStopped_ = true;
    thread_.join();
    ::close(listening_);
    std::filesystem::remove_all(folder_);
}

std::string Proxy::url(const std::string& ofServer) const {
    const size_t begin = ofServer.find("host=") + 5;
    return std::string(ofServer).replace(begin, ofServer.find('&', begin) - begin, folder_);
}

void Proxy::cutAt(const std::string& words, Cut cut) {
    words_ = words;
    cut_ = cut;
}

void Proxy::serve() {
    while (!isStopped_) {
        pollfd next{listening_, POLLIN, 0};
        if (::poll(&next, 1, kLookMillis) <= 0) continue;
        const int client = ::accept(listening_, nullptr, nullptr);
        const int server = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const sockaddr_un address = addressOf(server_);
        if (::connect(server, plain(address), sizeof address) == 0) pass(client, server);
        ::close(client);
        ::close(server);
    }
}

void Proxy::pass(int client, int server) {
    std::array<pollfd, 2> ends{{{client, POLLIN, 0}, {server, POLLIN, 0}}};
    std::array<char, 65536> buffer;
    bool isFound = false;
    while (!isStopped_) {
        if (::poll(ends.data(), ends.size(), kLookMillis) <= 0) continue;
        for (size_t from = 0; from < ends.size(); ++from) {
            if (ends[from].revents == 0) continue;
            const ssize_t count = ::read(ends[from].fd, buffer.data(), buffer.size());
            if (count <= 0) return;
            const std::string_view text(buffer.data(), static_cast<size_t>(count));
            isFound = isFound || (from == 0 && cut_ != Cut::kNone && text.find(words_) != std::string_view::npos);
            // What the server has done is known by its answer, which the client never hears.
            if (isFound && (cut_ == Cut::kBeforeTheServerHasThem || from == 1)) {
                cut_ = Cut::kNone;
                ++cuts_;
                return;
            }
            EXPECT_EQ(::write(ends[1 - from].fd, buffer.data(), text.size()), count);
        }
    }
}

}  // namespace database
