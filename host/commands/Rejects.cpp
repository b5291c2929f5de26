#include "host/commands/Rejects.h"

#include <atomic>
#include <charconv>
#include <memory>
#include <mutex>

#include "host/configuration/Gate.h"
#include "host/configuration/InForce.h"
#include "host/connection/CopySender.h"
#include "host/connection/LoadedAdapter.h"
#include "host/connection/RunLoop.h"
#include "host/process/Console.h"
#include "host/process/Failure.h"
#include "host/process/Jvm.h"
#include "host/process/Output.h"
#include "host/process/Signals.h"
#include "host/rows/KeptRejects.h"
#include "host/rows/Rejects.h"
#include "host/rows/RowForms.h"
#include "host/rows/TextTable.h"
#include "host/values/Text.h"

namespace host {

namespace {

constexpr char kAll[] = "all";
constexpr size_t kAtATime = 50;  // copies that wait in memory

std::string listed(const std::vector<KeptReject>& rejects) {
    std::vector<std::vector<TextTable::Cell>> lines = {{{"id", TextTable::Side::kRight},
                                                        {"at"},
                                                        {"stage"},
                                                        {"column"},
                                                        {"replayed"},
                                                        {"message"},
                                                        {"error"}}};
    for (const KeptReject& one : rejects)
        lines.push_back({{std::to_string(one.id), TextTable::Side::kRight},
                         {one.at},
                         {nameOf(one.reject.stage)},
                         {one.reject.column},
                         {one.replayedAt},
                         {one.messageId},
                         {std::string(wholeCharacters(one.reject.text, 200))}});
    TextTable table(std::vector<size_t>(lines.front().size(), 0));
    for (const auto& line : lines) table.fit(line);
    std::string text;
    for (const auto& line : lines) table.appendLine(line, text);
    return text;
}

std::string shownReject(const KeptReject& kept) {
    std::string text;
    const auto line = [&text](const std::string& name, const std::string& value) {
        text += name + ": " + shown(value) + '\n';
    };
    line("id", std::to_string(kept.id));
    line("message", kept.messageId);
    line("at", kept.at);
    if (!kept.replayedAt.empty()) line("replayed", kept.replayedAt);
    line("stage", nameOf(kept.reject.stage));
    if (!kept.reject.key.empty()) line("key", kept.reject.key);
    line("error", kept.reject.text);
    if (!kept.reject.column.empty()) line("column", kept.reject.column);
    for (const EnvelopeField& field : kept.message.envelope)
        line((field.type == "header" ? "" : "property.") + field.name, field.value);
    line("format", kept.message.kind);
    line("body", kept.message.body ? *kept.message.body : "(was not kept)");
    return text;
}

std::unique_ptr<KeptRejects> rejectsOf(const Settings& settings, const RowType& streamType,
                                       const RejectsOptions& options) {
    if (hasSink(settings)) return databaseRejects(settings.sink, streamType);
    if (settings.rejects.empty())
        throw Failure("No rejects are kept: " + options.session.config +
                          " has neither sink.url nor host.rejects, which names a file for them.",
                      kBadConfiguration);
    const bool makesRows = !options.replay.empty() && !options.send;
    return fileRejects(settings.rejects,
                       makesRows ? rowForm(options.format).make(streamType, options.out) : nullptr,
                       !options.replay.empty());
}

class Replay {
public:
    Replay(const RejectsOptions& options, const Settings& settings, KeptRejects& rejects,
           const RowType& streamType)
        : rejects_(rejects),
          streamType_(streamType),
          isSentBack_(options.send),
          plugin_(pluginFor(settings, options.plugin)),
          session_(options.send ? settings : withOwnQueue(settings), options.session.logLevel),
          connection_(connectionInForce(session_.settings)),
          sender_(session_.context, session_.rowType, connection_),
          adapter_(plugin_, session_) {}

    int run(const std::vector<std::int64_t>& ids) {
        const StopAction onSignal([this] {
            const JvmThread thisThread;
            isStopped_ = true;
            rejects_.stop();
            sender_.stop();
            adapter_.stop();
        });
        if (!isSentBack_) adapter_.reset();
        if (!sender_.reset())
            throw Failure(isStopped_ ? kStoppedEarly
                                     : "The destination takes no sender; the reason stands above.");
        for (size_t i = 0; i < ids.size() && !isStopped_; ++i) {
            send(ids[i]);
            if (waiting_ == kAtATime) take();
        }
        if (waiting_ > 0 && !isStopped_) take();
        sender_.stop();
        adapter_.stop();
        return tell(ids.size());
    }

private:
    void send(std::int64_t id) {
        const auto kept = rejects_.load(id);
        if (!kept)
            throw Failure("There is no reject " + std::to_string(id) + "; --list shows those there are.");
        if (!kept->replayedAt.empty()) {
            ++before_;
            return;
        }
        if (!kept->message.body) {
            say("Reject " + std::to_string(id) + " stays: its body was not kept.");
            return;
        }
        if (!sender_.send(kept->message, rejects_.markOf(id))) {
            if (!isStopped_)
                say("Reject " + std::to_string(id) +
                    " stays: it could not be sent; the reason stands above.");
            return;
        }
        if (isSentBack_) {
            rejects_.wasSent(id);
            ++done_;
        } else {
            ++waiting_;
        }
    }

    // What was sent to the queue of this process.
    void take() {
        RunLimits limits;
        limits.messages = static_cast<std::int64_t>(waiting_);
        RunProgress progress;
        RunLoop(adapter_, session_, streamType_, limits, rejects_.replaySink(), progress).run();
        done_ += progress.totals.good;
        before_ += progress.totals.repeated;
        waiting_ = 0;
    }

    int tell(size_t count) const {
        const auto all = static_cast<std::int64_t>(count);
        say(std::string(isSentBack_ ? "sent back " : "replayed ") + std::to_string(done_) +
            ", replayed before " + std::to_string(before_) + ", stay " +
            std::to_string(all - done_ - before_));
        return done_ + before_ == all ? kDone : kFailed;
    }

    KeptRejects& rejects_;
    const RowType& streamType_;
    const bool isSentBack_;
    const Plugin plugin_;
    Session session_;
    Parameters connection_;
    CopySender sender_;
    LoadedAdapter adapter_;
    std::atomic<bool> isStopped_{false};
    size_t waiting_ = 0;
    std::int64_t done_ = 0;
    std::int64_t before_ = 0;
};

std::vector<std::int64_t> wanted(const RejectsOptions& options, KeptRejects& rejects) {
    std::vector<std::int64_t> ids;
    if (options.replay != kAll) {
        ids.push_back(std::stoll(options.replay));
    } else {
        for (const KeptReject& one : rejects.list(false)) ids.push_back(one.id);
    }
    return ids;
}

}  // namespace

int runRejects(const RejectsOptions& options) {
    const Settings settings = soundSettings(options.session.config, options.session.overrides, Purpose::kRun);
    const RowType streamType(settings.streamName, streamColumns(settings));
    const std::unique_ptr<KeptRejects> rejects = rejectsOf(settings, streamType, options);
    if (!options.replay.empty()) {
        const std::vector<std::int64_t> ids = wanted(options, *rejects);
        if (ids.empty()) {
            say("There is no reject to replay.");
            return kDone;
        }
        return Replay(options, settings, *rejects, streamType).run(ids);
    }
    if (options.show == 0) {
        Output().write(listed(rejects->list(options.all)));
        return kDone;
    }
    const auto kept = rejects->load(options.show);
    if (!kept)
        throw Failure("There is no reject " + std::to_string(options.show) +
                      "; --list shows those there are.");
    Output().write(shownReject(*kept));
    return kDone;
}

}  // namespace host
