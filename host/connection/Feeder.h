// Feeds lines to the destination while a run takes from it, from the same process: an in-JVM broker is seen
// by no other.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>

#include "host/connection/Sender.h"
#include "host/connection/Session.h"
#include "host/process/LineSource.h"

namespace host {

class Feeder {
public:
    // Starts sending the lines on a thread of its own. It asks there for `taken`, how many messages the run
    // has taken, and keeps at most kMostAhead ahead: an in-JVM broker does not count text bodies against its
    // memory limit, so nothing else would hold it back. `onFailure` is called there after the one sentence
    // that says what failed. The source stays with the caller and outlives the feeder.
    Feeder(LineSource& source, Session& session, std::function<int64_t()> taken,
           std::function<void()> onFailure);
    static constexpr int64_t kMostAhead = 1000;
    ~Feeder();  // as close
    Feeder(const Feeder&) = delete;
    Feeder& operator=(const Feeder&) = delete;

    // Ends the feeding wherever it is, even waiting for input, and waits for that.
    void close();

private:
    void run();
    void sendAll();
    bool mayGoOn(int64_t sent);
    bool isClosing();

    LineSource& source_;
    const std::function<int64_t()> taken_;
    const std::function<void()> onFailure_;
    Sender sender_;
    std::mutex lock_;  // guards what follows
    std::condition_variable changed_;
    bool closing_ = false;
    std::thread thread_;
};

}  // namespace host
