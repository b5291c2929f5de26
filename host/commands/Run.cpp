#include "host/commands/Run.h"

#include <atomic>
#include <memory>
#include <mutex>

#include "host/configuration/Gate.h"
#include "host/connection/Feeder.h"
#include "host/connection/LoadedAdapter.h"
#include "host/connection/RunLoop.h"
#include "host/process/Console.h"
#include "host/process/Failure.h"
#include "host/process/Jvm.h"
#include "host/process/Signals.h"
#include "host/rows/DatabaseSink.h"
#include "host/rows/RejectFile.h"
#include "host/rows/RowForms.h"

namespace host {

namespace {

class Runner {
public:
    Runner(const RunOptions& options, Settings settings)
        : options_(options),
          feed_(options.feed.empty() ? nullptr : std::make_unique<LineSource>(options.feed)),
          streamType_(settings.streamName, streamColumns(settings)),
          sinkSettings_(settings.sink),
          sink_(sinkFor(settings)),
          plugin_(pluginFor(settings, options.plugin)),
          session_(std::move(settings), options.session.logLevel),
          limits_{options.rows, options.idle, options.mostRejects} {}

    int run() {
        const StopAction onSignal([this] {
            const JvmThread thisThread;
            stop();
        });
        while (!runOnce()) {
        }
        if (feeder_) feeder_->close();
        const Totals& totals = progress_.totals;
        sayTotals(totals, begin_ < totals.lastMessage ? secondsBetween(begin_, totals.lastMessage) : 0);
        if (hasSink(session_.settings)) sayBatches(totals);
        if (limits_.rejects > 0 && totals.bad >= limits_.rejects) {
            say("The run ended with " + std::to_string(totals.bad) +
                " messages rejected, as --max-bad asks.");
            return kFailed;
        }
        return feedFailed_ ? kFailed : kDone;
    }

private:
    std::unique_ptr<RowSink> sinkFor(const Settings& settings) const {
        if (hasSink(settings)) {
            if (!options_.out.empty())
                throw Failure(
                    "--out is for rows as text, but the rows go into the database of sink.url; leave one of "
                    "them out.",
                    kUsage);
            return makeDatabaseSink(sinkSettings_, streamType_);
        }
        std::unique_ptr<RowSink> rows = rowForm(options_.format).make(streamType_, options_.out);
        return keepingRejects(std::move(rows), settings.rejects);
    }

    // False: somebody else writes for the same source, and this host is to wait for its next turn.
    bool runOnce() {
        sink_->open();
        LoadedAdapter adapter(plugin_, session_);
        const Current current(*this, adapter);
        adapter.reset();
        if (begin_ == Clock::time_point()) {
            say("ready");
            begin_ = Clock::now();
        }
        plugin_.start(adapter.handle());
        startFeeding();
        RunLoop loop(adapter, session_, streamType_, limits_, *sink_, progress_);
        try {
            loop.run();
        } catch (const TakenOver& takenOver) {
            say(takenOver.what());
            adapter.stop();
            return isStopped_;
        }
        adapter.stop();
        return true;
    }

    // Not before reset succeeded: a topic needs its subscriber first.
    void startFeeding() {
        if (!feed_ || feeder_) return;
        feeder_ = std::make_unique<Feeder>(
            *feed_, session_, [this] { return progress_.taken.load(); },
            [this] {
                feedFailed_ = true;
                stop();
            });
    }

    void stop() {
        isStopped_ = true;
        sink_->stop();
        const std::lock_guard guard(lock_);
        if (current_ != nullptr) current_->stop();
    }

    // The adapter that a stop is for.
    class Current {
    public:
        Current(Runner& runner, LoadedAdapter& adapter) : runner_(runner) { set(&adapter); }
        ~Current() { set(nullptr); }
        Current(const Current&) = delete;
        Current& operator=(const Current&) = delete;

    private:
        void set(LoadedAdapter* adapter) {
            const std::lock_guard guard(runner_.lock_);
            runner_.current_ = adapter;
            if (adapter != nullptr && runner_.isStopped_) adapter->stop();
        }
        Runner& runner_;
    };

    const RunOptions& options_;
    const std::unique_ptr<LineSource> feed_;
    const RowType streamType_;
    const SinkSettings sinkSettings_;
    const std::unique_ptr<RowSink> sink_;
    const Plugin plugin_;
    Session session_;
    const RunLimits limits_;
    RunProgress progress_;
    Clock::time_point begin_{};
    std::atomic<bool> feedFailed_{false};
    std::atomic<bool> isStopped_{false};
    std::mutex lock_;
    LoadedAdapter* current_ = nullptr;  // guarded by lock_
    std::unique_ptr<Feeder> feeder_;
};

}  // namespace

int runRows(const RunOptions& options) {
    return Runner(options, soundSettings(options.session.config, options.session.overrides, Purpose::kRun))
        .run();
}

}  // namespace host
