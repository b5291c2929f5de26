#include "host/commands/Run.h"

#include <atomic>
#include <memory>
#include <optional>

#include "host/configuration/Gate.h"
#include "host/connection/ConnectionState.h"
#include "host/connection/Feeder.h"
#include "host/connection/LoadedAdapter.h"
#include "host/process/Console.h"
#include "host/process/Failure.h"
#include "host/process/Jvm.h"
#include "host/process/Signals.h"
#include "host/rows/Batch.h"
#include "host/rows/RowForms.h"
#include "host/rows/RunReport.h"
#include "host/rows/SilentBadMessages.h"
#include "host/values/ModifiedUtf8.h"

namespace host {

namespace {

// The input thread's work: next row, write it, commit, until something ends it.
class Loop {
public:
    Loop(LoadedAdapter& adapter, const Session& session, const RunOptions& options, RowSink& sink)
        : adapter_(adapter),
          session_(session),
          options_(options),
          sink_(sink),
          silent_(toUtf8(session.rowType.streamName)) {}

    void run() {
        const Clock::time_point start = Clock::now();
        lastMessage_ = idleSince_ = start;
        {
            StatusLine status(start, [] { return connectionState() == ConnectionState::kOpen; });
            while (!adapter_.isStopped() && !isAtEnd()) {
                const Clock::time_point now = step();
                status.update(totals_, now);
            }
        }
        silent_.tell(lastMessage_);
        seconds_ = secondsBetween(start, lastMessage_);
    }

    void sayTotals() const { host::sayTotals(totals_, seconds_); }

private:
    bool isAtEnd() const {
        const bool hasRows = options_.rows > 0 && totals_.good >= options_.rows;
        return hasRows || (options_.idle > 0 && idle_ >= options_.idle);
    }

    Clock::time_point step() {
        const Plugin& plugin = adapter_.plugin();
        const int64_t errorsBefore = session_.errors;
        Batch batch;
        batch.messages.emplace_back().row.reset(static_cast<ServerRow*>(plugin.getNext(adapter_.handle())));
        const Clock::time_point now = Clock::now();
        const int64_t total = plugin.getTotalRowsProcessed(adapter_.handle());
        if (total == totals_.total) {
            waitedInVain(now);
            return now;
        }
        // Only when it is kept may the provider forget the row's message. A failure goes up with the adapter
        // running: a stop from this thread would tell the connector that the row is safe.
        sink_.keep(batch);
        plugin.commitTransaction(adapter_.handle());
        totals_.total = total;
        totals_.good = plugin.getNumberOfGoodRows(adapter_.handle());
        const int64_t bad = plugin.getNumberOfBadRows(adapter_.handle());
        if (bad > totals_.bad && session_.errors == errorsBefore) silent_.add(bad - totals_.bad, now);
        totals_.bad = bad;
        lastMessage_ = idleSince_ = now;
        idle_ = 0;
        return now;
    }

    // Nothing can wait where there is no connection to look: such a time is not idle.
    void waitedInVain(Clock::time_point now) {
        const ConnectionState state = connectionState();
        if (state == ConnectionState::kGivenUp && !adapter_.isStopped())
            throw Failure(
                "The connector has given up its connection, so the run ends; the reason stands above.");
        if (state != ConnectionState::kOpen) idleSince_ = now;
        idle_ = secondsBetween(idleSince_, now);
        silent_.add(0, now);
    }

    LoadedAdapter& adapter_;
    const Session& session_;
    const RunOptions& options_;
    RowSink& sink_;
    SilentBadMessages silent_;
    Totals totals_;
    Clock::time_point lastMessage_;
    Clock::time_point idleSince_;
    double idle_ = 0;
    double seconds_ = 0;
};

}  // namespace

int runRows(const RunOptions& options) {
    Settings settings = soundSettings(options.session.config, options.session.overrides, Purpose::kRun);
    std::optional<LineSource> feed;
    if (!options.feed.empty()) feed.emplace(options.feed);
    const std::unique_ptr<RowSink> sink =
        rowForm(options.format).make(RowType(settings.streamName, settings.columns), options.out);
    const Plugin plugin(pluginFor(settings, options.plugin));
    Session session(std::move(settings), options.session.logLevel);

    LoadedAdapter adapter(plugin, session);
    const StopAction onSignal([&adapter, &sink] {
        const JvmThread thisThread;
        sink->stop();
        adapter.stop();
    });
    adapter.reset();
    say("ready");
    plugin.start(adapter.handle());

    std::atomic<bool> feedFailed{false};
    std::unique_ptr<Feeder> feeder;
    if (feed) {
        // Not before reset succeeded: a topic needs its subscriber first.
        const auto taken = [&] { return plugin.getTotalRowsProcessed(adapter.handle()); };
        feeder = std::make_unique<Feeder>(*feed, session, taken, [&] {
            feedFailed = true;
            adapter.stop();
        });
    }
    Loop loop(adapter, session, options, *sink);
    loop.run();
    adapter.stop();
    if (feeder) feeder->close();
    loop.sayTotals();
    return feedFailed ? kFailed : kDone;
}

}  // namespace host
