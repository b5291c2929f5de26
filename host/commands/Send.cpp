#include "host/commands/Send.h"

#include <algorithm>
#include <atomic>

#include "host/configuration/Gate.h"
#include "host/connection/Sender.h"
#include "host/process/Clock.h"
#include "host/process/Console.h"
#include "host/process/Failure.h"
#include "host/process/Jvm.h"
#include "host/process/LineSource.h"
#include "host/process/Signals.h"

namespace host {

namespace {

class Sending {
public:
    Sending(Sender& sender, LineSource& source, const SendOptions& options,
            const std::atomic<bool>& isStopped)
        : sender_(sender), source_(source), options_(options), isStopped_(isStopped) {}

    void sendAll() {
        for (int64_t round = 0; round < options_.repeat && !isStopped_; ++round) {
            if (round > 0) source_.rewind();
            options_.whole ? sendWhole() : sendLines();
        }
    }
    int64_t sent() const { return sent_; }

private:
    void sendWhole() {
        std::string text;
        if (source_.rest(text)) send(std::move(text), source_.name());
    }

    void sendLines() {
        for (std::string line; source_.next(line);) send(line, source_.place());
    }

    void send(std::string text, const std::string& place) {
        constexpr char kSoh = '\x01';
        if (!options_.soh.empty()) std::replace(text.begin(), text.end(), options_.soh.front(), kSoh);
        try {
            sender_.send(text);
            ++sent_;
        } catch (const Failure& failure) {
            if (!isStopped_) throw Failure(place + ": " + failure.what());
        }
    }

    Sender& sender_;
    LineSource& source_;
    const SendOptions& options_;
    const std::atomic<bool>& isStopped_;
    int64_t sent_ = 0;
};

void saySent(int64_t count, double seconds) {
    say("sent " + std::to_string(count) + (count == 1 ? " message in " : " messages in ") +
        std::to_string(seconds) + " s");
}

}  // namespace

int sendMessages(const SendOptions& options) {
    if (options.file == kStandardInput && options.repeat > 1)
        throw Failure("Standard input can be read only once; --repeat needs a file.", kUsage);
    Settings settings = soundSettings(options.session.config, options.session.overrides, Purpose::kSend);
    LineSource source(options.file);
    Session session(std::move(settings), options.session.logLevel);
    Sender sender(session.context, session.rowType, session.settings.connection);
    std::atomic<bool> isStopped{false};
    const StopAction onSignal([&] {
        const JvmThread thisThread;
        isStopped = true;  // before the input ends: that is then no end of the work
        source.stop();
        sender.stop();
    });
    if (!sender.reset())
        throw Failure(isStopped ? kStoppedEarly
                                : "The destination takes no sender; the reason stands above.");
    Sending sending(sender, source, options, isStopped);
    const Clock::time_point start = Clock::now();
    try {
        sending.sendAll();
    } catch (const Failure&) {
        saySent(sending.sent(), secondsBetween(start, Clock::now()));
        throw;
    }
    saySent(sending.sent(), secondsBetween(start, Clock::now()));
    sender.stop();
    return isStopped ? kFailed : kDone;
}

}  // namespace host
