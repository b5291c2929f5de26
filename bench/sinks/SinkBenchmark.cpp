// A database's sink alone: batches of rows that are handed over one after another, for some seconds.
//
// bench_sinks URL append|upsert|mixed BATCH all|1000 SECONDS: the keys are all different, or of a thousand.
// Prints a line: form, batch, keys, rows a second that the sink keeps, the same with the time in which the
// rows are made, and the processor's time that this process takes to keep a row, in microseconds.
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>

#include "datatypes/TypeCodes.h"
#include "host/process/Failure.h"
#include "host/rows/Batch.h"
#include "host/rows/DatabaseSink.h"

namespace {

constexpr size_t kKeys = 1000;

double processorSeconds() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

template <typename... Values>
std::string formatted(const char* format, Values... values) {
    std::array<char, 100> text;
    const int length = std::snprintf(text.data(), text.size(), format, values...);
    return {text.data(), static_cast<size_t>(length)};
}

// Batches of a stream with a key and seven other columns, with message IDs as long as a broker's.
class Rows : public host::Envelopes {
public:
    Rows(const std::string& form, size_t size, bool areDifferent)
        : form_(form), size_(size), areDifferent_(areDifferent), isThere_(kKeys) {}

    void fill() {
        batch.envelopes = this;
        batch.messages.clear();
        batch.messages.resize(size_);
        ids_.clear();
        for (host::BatchMessage& message : batch.messages) {
            ids_.push_back(formatted("ID:broker-7f3a9c2d-host-01-45123-17322312345-4:1:1:1:%09lld", serial_));
            message.row = row();
        }
    }

    std::vector<std::string> ids() override { return ids_; }
    std::vector<std::string> replayOf() override { return {}; }
    host::MessageCopy copyOf(size_t) override { return {"none", {}, {}}; }

    host::Batch batch;
    const host::RowType type{"t",
                             {{"sym", DataTypes::kString, true},
                              {"n", DataTypes::kLong, false},
                              {"price", DataTypes::kFloat, false},
                              {"ts", DataTypes::kTimestamp, false},
                              {"side", DataTypes::kString, false},
                              {"qty", DataTypes::kInteger, false},
                              {"flag", DataTypes::kBoolean, false},
                              {"note", DataTypes::kString, false}}};

private:
    std::uint64_t random() {
        state_ ^= state_ << 13;
        state_ ^= state_ >> 7;
        return state_ ^= state_ << 17;
    }

    // One that changes something, so that nothing is rejected.
    char opFor(size_t key) {
        if (form_ != "mixed") return 'p';
        const std::uint64_t choice = random() % 5;
        const char op = choice == 0      ? 'p'
                        : choice == 1    ? 's'
                        : !isThere_[key] ? 'i'
                        : choice == 2    ? 'u'
                                         : 'd';
        isThere_[key] = op != 'd' && op != 's';
        return op;
    }

    std::unique_ptr<host::ServerRow> row() {
        const long long n = serial_++;
        const size_t key = areDifferent_ ? static_cast<size_t>(n) : random() % kKeys;
        const char op = opFor(areDifferent_ ? 0 : key);
        const auto part = [n](long long unit, long long count) { return static_cast<int>(n / unit % count); };
        std::vector<host::Value> values = {formatted("K%011zu", key),
                                           std::int64_t{n},
                                           static_cast<double>(random() % 1000000) / 100,
                                           formatted("2026-11-21 %02d:%02d:%02d.%03d", part(3600000, 24),
                                                     part(60000, 60), part(1000, 60), part(1, 1000)),
                                           std::string(n % 2 == 1 ? "BUY" : "SELL"),
                                           static_cast<std::int64_t>(random() % 10000),
                                           n % 2 == 1,
                                           std::string("account 12345 desk EQ1")};
        return std::unique_ptr<host::ServerRow>(new host::ServerRow{&type, "t", op, n, std::move(values)});
    }

    const std::string form_;
    const size_t size_;
    const bool areDifferent_;
    std::vector<bool> isThere_;
    std::vector<std::string> ids_;
    long long serial_ = 0;
    std::uint64_t state_ = 88172645463325252ULL;
};

void run(const std::string& url, const std::string& form, size_t size, const std::string& keys,
         double limit) {
    host::SinkSettings settings;
    settings.url = url;
    settings.table = "t_" + form;
    settings.source = "bench " + std::to_string(::getpid());
    settings.mode = form == "append" ? host::SinkMode::kAppend : host::SinkMode::kApply;
    Rows rows(form, size, keys == "all");
    const auto sink = host::makeDatabaseSink(settings, rows.type);
    sink->open();
    std::int64_t count = 0;
    double keeping = 0, busy = 0;
    const double begin = now();
    while (now() - begin < limit) {
        rows.fill();
        const double start = now(), startBusy = processorSeconds();
        const host::Kept kept = sink->keep(rows.batch);
        sink->settled(true);
        keeping += now() - start;
        busy += processorSeconds() - startBusy;
        count += kept.rows;
        if (kept.rejected + kept.repeated > 0)
            throw host::Failure("Rows were rejected, or kept before: the table must be a new one.");
    }
    const auto all = static_cast<double>(count);
    std::printf("%s\t%zu\t%s\t%.0f\t%.0f\t%.2f\n", form.c_str(), size, keys.c_str(), all / keeping,
                all / (now() - begin), busy / all * 1e6);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 6) {
        std::cerr << "bench_sinks URL append|upsert|mixed BATCH all|1000 SECONDS\n";
        return host::kUsage;
    }
    try {
        run(argv[1], argv[2], static_cast<size_t>(std::atoi(argv[3])), argv[4], std::atof(argv[5]));
    } catch (const host::Failure& failure) {
        std::cerr << failure.what() << '\n';
        return failure.code;
    }
    return host::kDone;
}
