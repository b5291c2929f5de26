#include "host/rows/DatabaseSink.h"

#include <algorithm>
#include <ctime>
#include <unordered_set>
#include <utility>

#include "host/database/StoredText.h"
#include "host/database/Unavailable.h"
#include "host/process/Console.h"
#include "host/process/Failure.h"
#include "host/process/Signals.h"
#include "host/rows/Rejects.h"
#include "host/values/ReplayMark.h"
#include "host/values/Text.h"

namespace host {

namespace {

constexpr std::chrono::milliseconds kLookAgain(250);
constexpr std::chrono::seconds kIdleTry(5);  // while nobody waits for the database

std::string describe(const Holder& holder) {
    std::string text;
    if (holder.since != 0) {
        std::tm parts{};
        localtime_r(&holder.since, &parts);
        char time[sizeof " since 23:59"];
        std::strftime(time, sizeof time, " since %H:%M", &parts);
        text += time;
    }
    if (holder.process != 0) text += " (pid " + std::to_string(holder.process) + ')';
    return text;
}

}  // namespace

// A batch on its way into the database, through any number of tries.
struct DatabaseSink::Work {
    struct Rejected {
        size_t message;
        Reject reject;
        std::int64_t id = 0;
    };

    const Batch* batch = nullptr;
    std::vector<std::string> ids;   // of all its messages, as the ledger has them
    std::vector<Replayed> replays;  // of each, where any is sent again
    std::vector<size_t> fresh;      // the messages that were not kept before
    DatabaseSession::Care care = DatabaseSession::Care::kInOneGo;
    bool isCommitting = false;  // the last try may have been committed

    // What the last try came to.
    std::vector<Rejected> rejected;
    std::int64_t rows = 0;
    std::int64_t repeated = 0;
};

DatabaseSink::DatabaseSink(const SinkSettings& settings, const RowType& type)
    : settings_(settings),
      session_(makeSession(settings, type)),
      schema_(settings, type),
      ledger_(settings.ledgerHours) {}

void DatabaseSink::open() {
    Patience patience(stop_, settings_.retrySeconds, 0);
    for (;;) {
        try {
            attach(Standby::kWaits);
            patience.isBack();
            return;
        } catch (const Unavailable& reason) {
            session_->rollback();
            patience.await(reason.what());
        }
    }
}

void DatabaseSink::attach(Standby standby) {
    const bool isNew = session_->connect();
    if (!isNew && isAttached_ && session_->signOfLife()) return;
    isAttached_ = false;
    if (!shape_) shape_ = schema_.ensure(*session_);
    if (isNew) session_->prepare(*shape_);
    awaitSource(standby);
    if (ledger_.claim(*session_) == Ledger::Claim::kTakenOver) giveUpSource();
    isAttached_ = true;
}

void DatabaseSink::awaitSource(Standby standby) {
    bool isTold = false;
    const std::string source = inQuotes(settings_.source);
    while (const std::optional<Holder> holder = session_->lockSource()) {
        // In the midst of a batch it may be the connection that was lost, of which the server does not know
        // yet; a host that has taken over has also counted the epoch up.
        if (standby == Standby::kFails && ledger_.isClaimed()) {
            if (ledger_.claim(*session_) == Ledger::Claim::kTakenOver) giveUpSource();
            throw Unavailable("source " + source + " is locked" + describe(*holder));
        }
        if (!isTold)
            say("Another host writes source " + source + describe(*holder) +
                "; this one waits to take over.");
        isTold = true;
        stop_.wait(kLookAgain);
        if (stop_.isStopped()) throw Failure(kStoppedEarly);
    }
    if (isTold) say("This host writes source " + source + " now.");
}

void DatabaseSink::giveUpSource() {
    session_->rollback();
    session_->disconnect();
    ledger_.giveUp();
    isAttached_ = false;
    throw TakenOver(
        "Source " + inQuotes(settings_.source) +
        " was taken over by another host; this one writes nothing more for it, and starts again.");
}

DatabaseSink::Work DatabaseSink::workOf(const Batch& batch) const {
    Work work;
    work.batch = &batch;
    const size_t count = batch.messages.size();
    std::vector<std::string> ids, replays;
    if (batch.envelopes != nullptr) {
        ids = batch.envelopes->ids();
        replays = batch.envelopes->replayOf();
    }
    ids.resize(count);
    std::unordered_set<std::string_view> seen;
    seen.reserve(count);
    work.ids.reserve(count);  // they must stay where they are
    work.fresh.reserve(count);
    for (size_t i = 0; i < count; ++i) {
        const BatchMessage& message = batch.messages[i];
        if (ids[i].empty() && (message.row || message.reject))
            throw Failure(
                "The provider gives no message IDs (they are disabled at the sender); exactly once needs "
                "them.");
        work.ids.push_back(storedLine(ids[i]));
        if (!ledger_.knows(work.ids[i]) && seen.insert(work.ids[i]).second) work.fresh.push_back(i);
    }
    for (const std::string& text : replays) work.replays.push_back(replayedOf(text, settings_.source));
    work.replays.resize(count);
    return work;
}

Kept DatabaseSink::keep(Batch& batch) {
    Kept kept;
    if (batch.messages.empty()) return kept;
    Patience patience(stop_, settings_.retrySeconds, batch.messages.size(), [this] { signOfLife(); });
    std::optional<Work> work;
    for (bool isDone = false; !isDone;) {
        try {
            if (work && work->isCommitting) isAttached_ = false;  // the ledger tells what became of it
            attach(Standby::kFails);
            if (!work) work = workOf(batch);
            isDone = (work->isCommitting && ledger_.wasCommitted(work->ids)) || attempt(*work);
            patience.isBack();
        } catch (const Unavailable& reason) {
            session_->rollback();
            patience.await(reason.what());
        } catch (const Failure&) {
            session_->rollback();
            throw;
        }
    }
    tell(*work);
    for (const Work::Rejected& rejected : work->rejected) {
        batch.messages[rejected.message].reject = rejected.reject;
        batch.messages[rejected.message].row.reset();
    }
    kept.rows = work->rows;
    kept.rejected = static_cast<std::int64_t>(work->rejected.size());
    kept.repeated = work->repeated;
    kept.waited = patience.seconds();
    if (work->fresh.empty()) {
        ledger_.isRepeated(work->ids);
    } else {
        ledger_.isWritten(std::move(work->ids));
    }
    return kept;
}

// Repeats that are confirmed say nothing of the others that were written with them.
// One try; false: the same again, with more care.
bool DatabaseSink::attempt(Work& work) {
    work.rejected.clear();
    work.rows = 0;
    work.isCommitting = false;
    work.repeated = static_cast<std::int64_t>(work.batch->messages.size() - work.fresh.size());
    if (work.fresh.empty()) return true;

    session_->begin();
    std::vector<Change> changes;
    std::vector<size_t> messages;
    gather(work, changes, messages);
    std::vector<Refused> refused;
    const LedgerUpdate update = ledger_.update(work.ids);
    if (!session_->write(&update, changes, work.care, refused)) giveUpSource();
    for (Refused& one : refused) work.rejected.push_back({messages[one.change], std::move(one.reject)});
    std::sort(work.rejected.begin(), work.rejected.end(),
              [](const Work::Rejected& a, const Work::Rejected& b) { return a.message < b.message; });
    work.rows = static_cast<std::int64_t>(changes.size() - refused.size());
    keepRejects(work);
    work.isCommitting = true;
    if (session_->commit()) return true;
    work.isCommitting = false;
    if (work.care == DatabaseSession::Care::kStrict)
        throw Failure(
            "The database refuses the batch at its commit, though it took each of its rows; nothing of it "
            "was kept.");
    work.care = DatabaseSession::Care::kStrict;
    return false;
}

// The rows to be written, each with the message that it is of; rejects that came with the batch are put down.
void DatabaseSink::gather(Work& work, std::vector<Change>& changes, std::vector<size_t>& messages) {
    for (const size_t i : work.fresh) {
        const BatchMessage& message = work.batch->messages[i];
        if (const Replayed& replayed = work.replays[i]; replayed.id != kNoReplay) {
            // The mark must not be rolled back with somebody else's row.
            if (work.care == DatabaseSession::Care::kInOneGo) work.care = DatabaseSession::Care::kOneByOne;
            // One that nobody knows here is a message like any other.
            if (session_->markReplayed(replayed.id, replayed.messageId) == DatabaseSession::Marked::kBefore) {
                ++work.repeated;
                continue;
            }
        }
        if (message.reject) {
            work.rejected.push_back({i, *message.reject});
        } else if (message.row) {
            changes.push_back({message.row.get(), &work.ids[i]});
            messages.push_back(i);
        }
    }
}

void DatabaseSink::keepRejects(Work& work) {
    for (Work::Rejected& one : work.rejected) {
        const std::string& id = work.ids[one.message];
        if (!settings_.keepsRejects)
            throw Failure(rejectSentence(id, one.reject) +
                          " sink.rejects is \"stop\": nothing of its batch was kept.");
        KeptReject kept;
        kept.messageId = id;
        kept.reject = {one.reject.stage, storedLine(one.reject.key), storedLine(one.reject.text),
                       storedLine(one.reject.column)};
        kept.message = work.batch->envelopes->copyOf(one.message);
        kept.message.kind = storedLine(kept.message.kind);
        one.id = session_->insertReject(kept);
    }
}

void DatabaseSink::tell(const Work& work) const {
    for (const Work::Rejected& one : work.rejected)
        say(rejectSentence(work.ids[one.message], one.reject,
                           std::string(kRejectedTable) + " (id " + std::to_string(one.id) + ')'));
}

// Without a try for itself a host that has nothing to write would never hear that its source was taken over,
// and keep the provider's connection from the one who has it.
void DatabaseSink::idle() {
    if (!ledger_.isClaimed() || Clock::now() < nextIdleTry_) return;
    try {
        attach(Standby::kFails);
    } catch (const Unavailable&) {
        session_->rollback();
        // A session that has just turned out to be lost is made anew at once.
        if (!isAttached_) nextIdleTry_ = Clock::now() + kIdleTry;
        isAttached_ = false;
    }
}

// While a batch waits. A loss is the next try's.
void DatabaseSink::signOfLife() noexcept {
    try {
        session_->signOfLife();
    } catch (const std::exception&) {
        session_->rollback();
    }
}

void DatabaseSink::stop() {
    stop_.stop();
    session_->stop();
}

std::unique_ptr<RowSink> makeDatabaseSink(const SinkSettings& settings, const RowType& type) {
    return std::make_unique<DatabaseSink>(settings, type);
}

}  // namespace host
