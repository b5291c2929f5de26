#include "host/Run.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>

#include "host/ClassPath.h"
#include "host/Configuration.h"
#include "host/Console.h"
#include "host/Feeder.h"
#include "host/Installation.h"
#include "host/Jvm.h"
#include "host/Output.h"
#include "host/Plugin.h"
#include "host/RowFormat.h"
#include "host/Signals.h"
#include "host/toolkit/ModifiedUtf8.h"

namespace host {

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start, Clock::time_point end) {
    return std::chrono::duration<double>(end - start).count();
}

// The adapter, created, wired and deleted.
class LoadedAdapter {
public:
    LoadedAdapter(const Plugin& plugin, Context& context, RowType& rowType, Parameters& parameters)
        : plugin_(plugin), handle_(plugin.createAdapter()) {
        plugin.setCallBackReference(handle_, &context);
        plugin.setConnectionRowType(handle_, &rowType);
        plugin.setConnectionParams(handle_, &parameters);
    }
    ~LoadedAdapter() { plugin_.deleteAdapter(handle_); }
    LoadedAdapter(const LoadedAdapter&) = delete;
    LoadedAdapter& operator=(const LoadedAdapter&) = delete;

    const Plugin& plugin() const { return plugin_; }
    void* handle() const { return handle_; }

    // Any thread. A stop that came before reset had begun is forgotten by it, so this may be called again.
    void stop() {
        isStopped_ = true;
        const std::lock_guard guard(stopLock_);
        plugin_.stop(handle_);
    }
    bool isStopped() const { return isStopped_; }

private:
    const Plugin& plugin_;
    void* handle_;
    std::mutex stopLock_;
    std::atomic<bool> isStopped_{false};
};

// Tells of bad messages for which the adapter gave no reason, at most once a second.
class SilentBadMessages {
public:
    explicit SilentBadMessages(const std::string& stream) : stream_(stream) {}

    void add(int64_t count, Clock::time_point now) {
        untold_ += count;
        if (now - told_ >= std::chrono::seconds(1)) tell(now);
    }
    void tell(Clock::time_point now) {
        if (untold_ == 0) return;
        say(std::to_string(untold_) + (untold_ == 1 ? " message was" : " messages were") +
            " counted as bad without a reason from the adapter: for another stream than \"" + stream_ +
            "\", or refused by the connector, which then says so above.");
        untold_ = 0;
        told_ = now;
    }

private:
    std::string stream_;
    int64_t untold_ = 0;
    Clock::time_point told_;
};

std::unique_ptr<RowFormat> makeFormat(const std::string& name, const RowType& type, const Output& output) {
    if (name == "csv") return makeCsv(type, output.isAtStart());
    if (name == "table") return makeTable(type);
    return makeJsonLines(type);
}

struct Totals {
    int64_t total = 0;
    int64_t good = 0;
    int64_t bad = 0;
    double seconds = 0;  // from "ready" to the last message
};

class Loop {
public:
    Loop(LoadedAdapter& adapter, const RowType& type, const RunOptions& options, Output& output,
         const std::atomic<int64_t>& errors)
        : adapter_(adapter),
          options_(options),
          output_(output),
          format_(makeFormat(options.output, type, output)),
          errors_(errors),
          silent_(toUtf8(type.streamName)) {}

    Totals run(Feeder* feeder) {
        const Clock::time_point start = Clock::now();
        last_ = start;
        while (!adapter_.isStopped() && !isAtEnd()) step(feeder);
        silent_.tell(last_);
        totals_.seconds = secondsSince(start, last_);
        return totals_;
    }

private:
    bool isAtEnd() const {
        const bool hasRows = options_.rows > 0 && totals_.good >= options_.rows;
        return hasRows || (options_.idle > 0 && idle_ >= options_.idle);
    }

    void step(Feeder* feeder) {
        const Plugin& plugin = adapter_.plugin();
        const int64_t errorsBefore = errors_;
        const std::unique_ptr<ServerRow> row(static_cast<ServerRow*>(plugin.getNext(adapter_.handle())));
        if (row) {
            text_.clear();
            format_->append(*row, text_);
            output_.write(text_);
        }
        const Clock::time_point now = Clock::now();
        const int64_t total = plugin.getTotalRowsProcessed(adapter_.handle());
        if (total == totals_.total) {
            idle_ = secondsSince(last_, now);
            return;
        }
        // The row is in the system's hands: only now may the provider forget its message.
        plugin.commitTransaction(adapter_.handle());
        totals_.total = total;
        totals_.good = plugin.getNumberOfGoodRows(adapter_.handle());
        const int64_t bad = plugin.getNumberOfBadRows(adapter_.handle());
        if (bad > totals_.bad && errors_ == errorsBefore) silent_.add(bad - totals_.bad, now);
        totals_.bad = bad;
        last_ = now;
        idle_ = 0;
        if (feeder != nullptr) feeder->taken(total);
    }

    LoadedAdapter& adapter_;
    const RunOptions& options_;
    Output& output_;
    std::unique_ptr<RowFormat> format_;
    const std::atomic<int64_t>& errors_;
    SilentBadMessages silent_;
    Totals totals_;
    std::string text_;
    Clock::time_point last_;
    double idle_ = 0;
};

void sayTotals(const Totals& totals) {
    char text[160];
    const double rate = totals.seconds > 0 ? static_cast<double>(totals.good) / totals.seconds : 0;
    std::snprintf(text, sizeof text, "total %lld, good %lld, bad %lld, %.3f s, %.0f rows/s",
                  static_cast<long long>(totals.total), static_cast<long long>(totals.good),
                  static_cast<long long>(totals.bad), totals.seconds, rate);
    say(text);
}

}  // namespace

int runRows(const RunOptions& options) {
    Settings settings = loadSettings(options.config, options.overrides);
    const std::string path = classPath(settings);
    provideKelHome();
    if (std::string error; !loadCatalogue(catalogueFile(), error)) say(error);
    const std::string pluginName = !options.plugin.empty() ? options.plugin : settings.plugin;
    const Plugin plugin(!pluginName.empty() ? pluginName : pluginFile().string());
    Output output(options.out);
    startJvm(path, settings.jvmOptions);

    std::atomic<int64_t> errors{0};
    setErrorSink([&errors](const char* text) {
        ++errors;
        sayModified("error: ", text);
    });
    Context context;
    context.adapterName = settings.streamName;
    context.logLevel = options.logLevel.value_or(settings.logLevel);
    context.log = [](int level, const char* text) {
        sayModified("log " + std::to_string(level) + ": ", text);
    };
    RowType rowType(settings.streamName, settings.columns);

    LoadedAdapter adapter(plugin, context, rowType, settings.connection);
    SignalWatch signals([&adapter] {
        const JvmThread thisThread;
        adapter.stop();
    });
    if (!plugin.reset(adapter.handle())) {
        if (adapter.isStopped()) throw Failure("Stopped before the connection was ready.");
        throw Failure(errors > 0 ? "The adapter refuses to start; the reason stands above."
                                 : "The adapter cannot connect; the connector's warning above says why.");
    }
    say("ready");
    plugin.start(adapter.handle());

    std::atomic<bool> feedFailed{false};
    std::unique_ptr<Feeder> feeder;
    if (!options.feed.empty()) {
        feeder = std::make_unique<Feeder>(options.feed, context, rowType, settings.connection, [&] {
            feedFailed = true;
            adapter.stop();
        });
    }
    const Totals totals = Loop(adapter, rowType, options, output, errors).run(feeder.get());
    adapter.stop();
    if (feeder) feeder->close();
    sayTotals(totals);
    return feedFailed ? kFailed : kDone;
}

}  // namespace host
