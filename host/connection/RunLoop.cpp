#include "host/connection/RunLoop.h"

#include <memory>

#include "host/configuration/InForce.h"
#include "host/connection/AdapterErrors.h"
#include "host/connection/ConnectionState.h"
#include "host/connection/Delivery.h"
#include "host/connection/RejectReasons.h"
#include "host/process/Failure.h"

namespace host {

namespace {

// A batch holds its rows, and the connector their messages.
constexpr size_t kMostBatchBytes = 8 << 20;

size_t bytesOf(const ServerRow& row) {
    size_t bytes = row.values.size() * sizeof(Value);
    for (const Value& value : row.values) {
        if (const auto* text = std::get_if<std::string>(&value)) bytes += text->size();
    }
    return bytes;
}

// Whether the provider gives a message again that was not settled.
bool comesAgain(const Settings& settings) { return isQueue(settings) || isDurable(settings); }

std::unique_ptr<Settlement> settlementOf(const Settings& settings, LoadedAdapter& adapter) {
    return settings.serverSettles ? settledByAdapter(adapter)
                                  : settledByHost(static_cast<size_t>(settleAfter(settings)));
}

}  // namespace

RunLoop::RunLoop(LoadedAdapter& adapter, const Session& session, const RowType& streamType,
                 const RunLimits& limits, RowSink& sink, RunProgress& progress)
    : adapter_(adapter),
      session_(session),
      limits_(limits),
      sink_(sink),
      progress_(progress),
      totals_(progress.totals),
      settlement_(settlementOf(session.settings, adapter)),
      envelope_(session.settings.envelope.empty()
                    ? std::nullopt
                    : std::optional<EnvelopeFields>(std::in_place, session.settings, streamType)) {
    batch_.envelopes = settlement_->delivery();
    adapterTotal_ = adapter.plugin().getTotalRowsProcessed(adapter.handle());
    adapterBad_ = adapter.plugin().getNumberOfBadRows(adapter.handle());
}

void RunLoop::run() {
    idleSince_ = Clock::now();
    StatusLine status(idleSince_, [] { return connectionState() == ConnectionState::kOpen; });
    while (!adapter_.isStopped() && !isAtEnd()) {
        step();
        status.update(totals_, Clock::now());
    }
    settle();
}

bool RunLoop::isAtEnd() const {
    return (limits_.rows > 0 && totals_.good + batchGood_ >= limits_.rows) ||
           (limits_.rejects > 0 && totals_.bad + batchBad_ >= limits_.rejects) ||
           (limits_.messages > 0 &&
            totals_.total + static_cast<std::int64_t>(batch_.messages.size()) >= limits_.messages) ||
           (limits_.idle > 0 && idle_ >= limits_.idle);
}

void RunLoop::step() {
    const size_t before = batch_.messages.size();
    take();
    const Clock::time_point now = Clock::now();
    if (batch_.messages.size() == before) {
        // Nothing waits, or the connector wants what was taken to be settled first.
        settle();
        if (before == 0) waitedInVain(now);
        return;
    }
    if (before == 0) batchBegin_ = now;
    totals_.lastMessage = idleSince_ = now;
    idle_ = 0;
    if (isDue(now)) settle();
}

// Adds to the batch what one call of the adapter took: one message, and those passed over before it.
void RunLoop::take() {
    const Plugin& plugin = adapter_.plugin();
    HeardErrors heard;
    std::unique_ptr<ServerRow> row(static_cast<ServerRow*>(plugin.getNext(adapter_.handle())));
    const std::int64_t total = plugin.getTotalRowsProcessed(adapter_.handle());
    const std::int64_t taken = total - adapterTotal_;
    if (taken == 0) return;
    adapterTotal_ = total;
    progress_.taken += taken;
    batch_.messages.resize(batch_.messages.size() + static_cast<size_t>(taken));
    BatchMessage& last = batch_.messages.back();
    const std::int64_t bad = plugin.getNumberOfBadRows(adapter_.handle());
    if (row) {
        batchBytes_ += bytesOf(*row);
        ++batchGood_;
        last.row = std::move(row);
    } else if (bad > adapterBad_) {
        last.reject = reasonOf(session_.settings, heard, settlement_->delivery(), batch_.messages.size() - 1);
        ++batchBad_;
    }
    adapterBad_ = bad;
}

bool RunLoop::isDue(Clock::time_point now) const {
    return batch_.messages.size() >= settlement_->most() || batchBytes_ >= kMostBatchBytes ||
           now - batchBegin_ >= std::chrono::milliseconds(session_.settings.sink.commitMillis);
}

// Only what is kept may be settled.
void RunLoop::settle() {
    if (batch_.messages.empty()) return;
    const bool isLost = settlement_->isLost();
    if (isLost && comesAgain(session_.settings)) {
        drop();
        return;
    }
    checkAlignment();
    if (envelope_) envelope_->fill(batch_, *settlement_->delivery());
    try {
        count(sink_.keep(batch_));
    } catch (const TakenOver&) {
        drop();
        throw;
    }
    // Of a topic without a memory nothing comes again, so what was heard is kept although its link is lost.
    if (isLost) settlement_->forget();
    sink_.settled(isLost || settlement_->settle());
    idleSince_ = Clock::now();
    beginBatch();
}

// The rows' messages are found by their numbers alone.
void RunLoop::checkAlignment() {
    Delivery* delivery = settlement_->delivery();
    if (delivery == nullptr || delivery->count() == batch_.messages.size()) return;
    throw Failure("The adapter counts " + std::to_string(batch_.messages.size()) +
                  " messages since the last settling and the connector " + std::to_string(delivery->count()) +
                  ", so nobody knows which row is of which; none of them is settled, and they come again.");
}

// The messages come again, so the rows are nobody's.
void RunLoop::drop() {
    settlement_->forget();
    beginBatch();
}

void RunLoop::beginBatch() {
    batch_.messages.clear();
    batchBytes_ = 0;
    batchGood_ = batchBad_ = 0;
}

void RunLoop::count(const Kept& kept) {
    totals_.total += static_cast<std::int64_t>(batch_.messages.size());
    totals_.good += kept.rows;
    totals_.bad += kept.rejected;
    totals_.repeated += kept.repeated;
    totals_.waited += kept.waited;
    ++totals_.batches;
}

// Nothing can wait where there is no connection to look: such a time is not idle.
void RunLoop::waitedInVain(Clock::time_point now) {
    const ConnectionState state = connectionState();
    if (state == ConnectionState::kGivenUp && !adapter_.isStopped())
        throw Failure("The connector has given up its connection, so the run ends; the reason stands above.");
    if (state != ConnectionState::kOpen) idleSince_ = now;
    idle_ = secondsBetween(idleSince_, now);
    sink_.idle();
}

}  // namespace host
