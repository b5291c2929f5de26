#include "host/Send.h"

#include <algorithm>
#include <atomic>
#include <fstream>
#include <iostream>
#include <iterator>

#include "host/Console.h"
#include "host/Jvm.h"
#include "host/RunReport.h"
#include "host/Sender.h"
#include "host/Signals.h"

namespace host {

namespace {

constexpr char kStandardInput[] = "-";

std::string placeOf(const std::string& file) { return file == kStandardInput ? "standard input" : file; }

class Sending {
public:
    Sending(Sender& sender, const SendOptions& options, const std::atomic<bool>& isStopped)
        : sender_(sender), options_(options), isStopped_(isStopped) {}

    void sendAll() {
        for (int64_t round = 0; round < options_.repeat && !isStopped_; ++round) {
            std::ifstream opened;
            if (options_.file != kStandardInput) opened.open(options_.file);
            std::istream& in = options_.file == kStandardInput ? std::cin : opened;
            if (!in) throw Failure("The file " + options_.file + " cannot be read.");
            options_.whole ? sendWhole(in) : sendLines(in);
        }
    }
    int64_t sent() const { return sent_; }

private:
    void sendWhole(std::istream& in) {
        send(std::string(std::istreambuf_iterator<char>(in), {}), placeOf(options_.file));
    }

    void sendLines(std::istream& in) {
        std::string line;
        for (int64_t number = 1; !isStopped_ && std::getline(in, line); ++number)
            send(line, placeOf(options_.file) + ":" + std::to_string(number));
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
    const SendOptions& options_;
    const std::atomic<bool>& isStopped_;
    int64_t sent_ = 0;
};

void saySent(int64_t count, double seconds) {
    say("sent " + std::to_string(count) + (count == 1 ? " message in " : " messages in ") +
        std::to_string(seconds) + " s");
}

}  // namespace

void refuseInJvmBroker(const Settings& settings, const std::string& instead) {
    const auto url = settings.connection.find("jndiURL");
    if (url != settings.connection.end() && url->second.starts_with("vm://"))
        throw Failure("connection.jndiURL is \"" + url->second +
                          "\", a broker inside the process that uses it, which no other process sees; use " +
                          instead + " the URL of a broker of its own, such as tcp://localhost:61616.",
                      kBadConfiguration);
}

int sendMessages(const SendOptions& options) {
    if (options.file == kStandardInput && options.repeat > 1)
        throw Failure("Standard input can be read only once; --repeat needs a file.", kUsage);
    // What is sent stands in the file, down to the stream's name, so there may be no stream yet.
    constexpr StreamSection kStream = StreamSection::kOptional;
    refuseInJvmBroker(loadSettings(options.session.config, options.session.overrides, kStream),
                      "run --feed FILE there, or");
    Session session(options.session, kStream);
    Sender sender(session.context, session.rowType, session.settings.connection);
    std::atomic<bool> isStopped{false};
    SignalWatch signals([&] {
        const JvmThread thisThread;
        isStopped = true;
        sender.stop();
    });
    if (!sender.reset())
        throw Failure("The destination takes no sender; the connector's warning above says why.");
    Sending sending(sender, options, isStopped);
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
