// The kept rejects of a source, and how one of them becomes a row after all.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "host/database/DatabaseSession.h"
#include "host/database/Patience.h"
#include "host/database/Schema.h"

namespace host {

// Works beside a run that writes for the same source. Operations throw Failure, also where the database is
// away for longer than a command should wait.
class RejectStore {
public:
    // The settings and the type, of the stream's rows, must outlive it.
    RejectStore(const SinkSettings& settings, const RowType& type);

    // The last `limit` of them in the order in which they were kept, without bodies and envelopes; those that
    // were sent again only if `all`.
    std::vector<KeptReject> list(bool all, std::int64_t limit);

    // None: the source has no such reject.
    std::optional<KeptReject> load(std::int64_t id);

    enum class Replay {
        kDone,    // its row is written
        kBefore,  // it was written before, or there is no such reject; nothing was done
        kRefused,
    };
    struct Outcome {
        Replay replay = Replay::kDone;
        Reject reject;  // of a row that was refused; it is now what the kept one is for
    };
    // Writes the row that was made of the kept message, as the sink does, and with it that this was done: of
    // any number of calls one does it.
    Outcome replay(std::int64_t id, std::unique_ptr<ServerRow> row);

    void stop();  // from any thread

private:
    template <typename Action>
    auto patiently(Action action);
    void attach();
    Outcome attempt(std::int64_t id, const ServerRow& row, bool& isCommitting);

    const SinkSettings& settings_;
    const std::unique_ptr<DatabaseSession> session_;
    const Schema schema_;
    StopRequest stop_;
};

}  // namespace host
