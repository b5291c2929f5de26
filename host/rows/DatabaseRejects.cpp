#include <limits>

#include "host/database/RejectStore.h"
#include "host/process/Console.h"
#include "host/rows/Batch.h"
#include "host/rows/KeptRejects.h"
#include "host/rows/Rejects.h"
#include "host/values/ReplayMark.h"

namespace host {

namespace {

class DatabaseRejects : public KeptRejects, private RowSink {
public:
    DatabaseRejects(const SinkSettings& settings, const RowType& type)
        : source_(settings.source), store_(settings, type) {}

    std::vector<KeptReject> list(bool all) override {
        return store_.list(all, std::numeric_limits<std::int64_t>::max());
    }
    std::optional<KeptReject> load(std::int64_t id) override { return store_.load(id); }
    std::string markOf(const KeptReject& kept) const override {
        return replayMark(kept.id, source_, kept.messageId);
    }
    RowSink& replaySink() override { return *this; }
    void wasSent(std::int64_t /*id*/) override {}  // whoever takes the copy tells
    void stop() override { store_.stop(); }

private:
    Kept keep(Batch& batch) override {
        Kept kept;
        const std::vector<std::string> marks = batch.envelopes->replayOf();
        for (size_t i = 0; i < batch.messages.size() && i < marks.size(); ++i) {
            BatchMessage& message = batch.messages[i];
            const std::int64_t id = replayedOf(marks[i], source_).id;
            if (message.row) {
                RejectStore::Outcome outcome = store_.replay(id, std::move(message.row));
                if (outcome.replay == RejectStore::Replay::kDone) ++kept.rows;
                if (outcome.replay == RejectStore::Replay::kBefore) ++kept.repeated;
                if (outcome.replay == RejectStore::Replay::kRefused) message.reject = outcome.reject;
            }
            if (!message.reject) continue;
            ++kept.rejected;
            say("Reject " + std::to_string(id) + " stays: " + message.reject->text);
        }
        return kept;
    }

    const std::string source_;
    RejectStore store_;
};

}  // namespace

std::unique_ptr<KeptRejects> databaseRejects(const SinkSettings& settings, const RowType& type) {
    return std::make_unique<DatabaseRejects>(settings, type);
}

}  // namespace host
