// The reading thread's work: takes messages, keeps what becomes of them, settles, until something ends it.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>

#include "host/connection/EnvelopeFields.h"
#include "host/connection/LoadedAdapter.h"
#include "host/connection/Settlement.h"
#include "host/process/Clock.h"
#include "host/rows/RowSink.h"
#include "host/rows/RunReport.h"

namespace host {

// What ends a run besides a stop; 0: nothing of the kind.
struct RunLimits {
    std::int64_t rows = 0;     // good rows
    double idle = 0;           // seconds with nothing waiting
    std::int64_t rejects = 0;  // messages that are no row
    std::int64_t messages = 0;
};

// How far a run is, over all adapters that it had.
struct RunProgress {
    Totals totals;
    std::atomic<std::int64_t> taken{0};  // messages, as a feeder may ask on its own thread
};

class RunLoop {
public:
    // All of them stay with the caller.
    RunLoop(LoadedAdapter& adapter, const Session& session, const RowType& streamType,
            const RunLimits& limits, RowSink& sink, RunProgress& progress);

    // Until the adapter is stopped or a limit is reached; what was taken until then is settled. Throws
    // Failure with the adapter running, since a stop from this thread would say that the rows are safe, and
    // TakenOver.
    void run();

private:
    bool isAtEnd() const;
    void step();
    void take();
    bool isDue(Clock::time_point now) const;
    void settle();
    void checkAlignment();
    void drop();
    void beginBatch();
    void count(const Kept& kept);
    void waitedInVain(Clock::time_point now);

    LoadedAdapter& adapter_;
    const Session& session_;
    const RunLimits& limits_;
    RowSink& sink_;
    RunProgress& progress_;
    Totals& totals_;
    const std::unique_ptr<Settlement> settlement_;
    const std::optional<EnvelopeFields> envelope_;
    Batch batch_;
    size_t batchBytes_ = 0;
    std::int64_t batchGood_ = 0;
    std::int64_t batchBad_ = 0;
    Clock::time_point batchBegin_;
    std::int64_t adapterTotal_ = 0;  // as the adapter counts
    std::int64_t adapterBad_ = 0;
    Clock::time_point idleSince_;
    double idle_ = 0;
};

}  // namespace host
