#include "host/Feeder.h"

#include "host/Console.h"
#include "host/Jvm.h"

namespace host {

Feeder::Feeder(LineSource& source, Session& session, std::function<void()> onFailure)
    : source_(source),
      onFailure_(std::move(onFailure)),
      sender_(session.context, session.rowType, session.settings.connection),
      thread_([this] { run(); }) {}

Feeder::~Feeder() { close(); }

void Feeder::taken(int64_t total) {
    const std::lock_guard guard(lock_);
    taken_ = total;
    changed_.notify_one();
}

void Feeder::close() {
    if (!thread_.joinable()) return;
    bool mayBlock = false;
    {
        const std::lock_guard guard(lock_);
        closing_ = true;
        mayBlock = connected_;
        changed_.notify_one();
    }
    source_.stop();
    // A send to a full broker waits for ever; closing its connection ends it.
    if (mayBlock) sender_.stop();
    thread_.join();
}

bool Feeder::isClosing() {
    const std::lock_guard guard(lock_);
    return closing_;
}

bool Feeder::mayGoOn(int64_t sent) {
    std::unique_lock guard(lock_);
    changed_.wait(guard, [&] { return closing_ || sent - taken_ < kMostAhead; });
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
        throw Failure("Feeding " + source_.name() +
                      " failed: the destination takes no sender; the reason stands above.");
    {
        const std::lock_guard guard(lock_);
        connected_ = true;
    }
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
