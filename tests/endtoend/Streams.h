// Configurations for the tests, and a broker in a process of its own.
#pragma once

#include <memory>
#include <set>
#include <string>

#include "tests/endtoend/HostProcess.h"

namespace endtoend {

inline constexpr char kInJvm[] = "vm://localhost?broker.persistent=false&broker.useJmx=false";

// A stream Trades of Symbol (string, key), Shares (integer), Price (float); CSV from the queue "test".
struct Stream {
    std::string url = kInJvm;
    std::string format = "CSV";
    std::string type = "QUEUE";
    std::string more;  // further lines of [connection]
    std::string host;  // lines of [host]

    static Stream durable(const std::string& url, int batchSize);
    std::string text() const;
};

// A broker at a port that stays the same over restarts.
class Broker {
public:
    explicit Broker(const Scratch& scratch, bool isPersistent = false);
    void start();
    void kill();
    std::string url() const { return "tcp://127.0.0.1:" + port_; }

private:
    const Scratch& scratch_;
    bool isPersistent_;
    std::string port_ = "0";
    std::unique_ptr<HostProcess> process_;
};

// A file of messages whose column Shares counts from first to last; and what of them is in a file of rows.
std::string numberedMessages(const Scratch& scratch, int first, int last);
struct Numbers {
    std::set<int> different;
    size_t repeats = 0;
};
Numbers numbersIn(const std::string& rows);

// Sends the file's lines; fails the test when that fails.
void send(const Scratch& scratch, const std::string& config, const std::string& file);

}  // namespace endtoend
