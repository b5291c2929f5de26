#include "host/database/RejectStore.h"

#include <string>

#include "host/database/StoredText.h"
#include "host/database/Unavailable.h"
#include "host/process/Failure.h"

namespace host {

namespace {

constexpr std::int64_t kLongestWait = 30;  // seconds: somebody sits before the command

}  // namespace

RejectStore::RejectStore(const SinkSettings& settings, const RowType& type)
    : settings_(settings), session_(makeSession(settings, type)), schema_(settings, type) {}

void RejectStore::attach() {
    if (session_->connect()) session_->prepare(schema_.ensure(*session_));
}

template <typename Action>
auto RejectStore::patiently(Action action) {
    Patience patience(stop_, settings_.retrySeconds > 0 ? settings_.retrySeconds : kLongestWait, 0);
    for (;;) {
        try {
            attach();
            return action();
        } catch (const Unavailable& reason) {
            session_->rollback();
            patience.await(reason.what());
        } catch (const Failure&) {
            session_->rollback();
            throw;
        }
    }
}

std::vector<KeptReject> RejectStore::list(bool all, std::int64_t limit) {
    return patiently([&] { return session_->listRejects(all, limit); });
}

std::optional<KeptReject> RejectStore::load(std::int64_t id) {
    return patiently([&] { return session_->loadReject(id); });
}

RejectStore::Outcome RejectStore::attempt(std::int64_t id, const ServerRow& row, bool& isCommitting) {
    session_->begin();
    const std::optional<KeptReject> kept = session_->loadReject(id);
    if (!kept || session_->markReplayed(id, kept->messageId) != DatabaseSession::Marked::kNow) {
        session_->rollback();
        // Of the last try nobody knew whether it had been committed.
        return {isCommitting && kept ? Replay::kDone : Replay::kBefore, {}};
    }
    std::vector<Refused> refused;
    // What a constraint says at the commit must be known before: it becomes the reject's reason.
    session_->write(nullptr, {{&row, &kept->messageId}}, DatabaseSession::Care::kStrict, refused);
    if (refused.empty()) {
        isCommitting = true;
        if (session_->commit()) return {};
        throw Failure("The database refuses the row of reject " + std::to_string(id) +
                      " at the commit, though it took it before; it was not written.");
    }
    session_->rollback();
    Reject& reject = refused.front().reject;
    reject.text = storedLine(reject.text);
    session_->begin();
    session_->changeReason(id, reject);
    session_->commit();
    return {Replay::kRefused, std::move(reject)};
}

RejectStore::Outcome RejectStore::replay(std::int64_t id, std::unique_ptr<ServerRow> row) {
    bool isCommitting = false;
    return patiently([&] { return attempt(id, *row, isCommitting); });
}

void RejectStore::stop() {
    stop_.stop();
    session_->stop();
}

}  // namespace host
