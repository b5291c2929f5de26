#include "host/connection/Feeder.h"

#include <chrono>

#include "host/process/Console.h"
#include "host/process/Failure.h"
#include "host/process/Jvm.h"

namespace host {

namespace {

constexpr std::chrono::milliseconds kLookAgain{1};  // a run takes a hundred messages in that time

}  // namespace

Feeder::Feeder(LineSource& source, Session& session, std::function<int64_t()> taken,
               std::function<void()> onFailure)
    : source_(source),
      taken_(std::move(taken)),
      onFailure_(std::move(onFailure)),
      sender_(session.context, session.rowType, session.settings.connection),
      thread_([this] { run(); }) {}

Feeder::~Feeder() { close(); }

void Feeder::close() {
    if (!thread_.joinable()) return;
    {
        const std::lock_guard guard(lock_);
        closing_ = true;
        changed_.notify_one();
    }
    source_.stop();
    // A send to a full broker waits for ever; closing its connection ends it.
    sender_.stop();
    thread_.join();
}

bool Feeder::isClosing() {
    const std::lock_guard guard(lock_);
    return closing_;
}

bool Feeder::mayGoOn(int64_t sent) {
    std::unique_lock guard(lock_);
    while (!closing_ && sent - taken_() >= kMostAhead) changed_.wait_for(guard, kLookAgain);
    return !closing_;
}

void Feeder::run() {
    const JvmThread thisThread;
    try {
        sendAll();
    } catch (const Failure& failure) {
        if (isClosing()) return;
        say(failure.what());
        onFailure_();
    }
}

void Feeder::sendAll() {
    if (!sender_.reset())
        throw Failure(source_.name() +
                      " cannot be fed: the destination takes no sender; the reason stands above.");
    std::string line;
    for (int64_t sent = 0; mayGoOn(sent) && source_.next(line); ++sent) {
        try {
            sender_.send(line);
        } catch (const Failure& failure) {
            throw Failure(source_.place() + ": " + failure.what());
        }
    }
}

}  // namespace host
