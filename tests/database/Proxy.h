// A way to a PostgreSQL server that can be cut in the midst of a conversation.
#pragma once

#include <atomic>
#include <string>
#include <thread>

namespace database {

// Listens at a socket file of its own and passes on to the server's, one connection after another.
class Proxy {
public:
    explicit Proxy(std::string server);
    ~Proxy();
    Proxy(const Proxy&) = delete;
    Proxy& operator=(const Proxy&) = delete;

    std::string url(const std::string& ofServer) const;

    // The next time that the client sends these words the connection is cut: behind them, before the server has answered.
    enum class Cut { kNone, kBeforeTheServerHasThem, kWhenTheServerHasDoneThem };
    void cutAt(const std::string& words, Cut cut);
    int cuts() const { return cuts_; }

private:
    void serve();
    void pass(int client, int server);

    const std::string server_;
    const std::string folder_;
    std::string words_;
    std::atomic<Cut> cut_{Cut::kNone};
    std::atomic<int> cuts_{0};
    std::atomic<bool> isStopped_{false};
    int listening_ = -1;
    std::thread thread_;
};

}  // namespace database
