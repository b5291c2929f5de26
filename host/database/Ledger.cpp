#include "host/database/Ledger.h"

#include <charconv>
#include <ctime>
#include <utility>

namespace host {

namespace {

constexpr std::int64_t kSecondsPerHour = 3600;

std::int64_t secondsOf(const std::string& row) {
    std::int64_t seconds = 0;
    std::from_chars(row.data(), row.data() + row.size(), seconds);
    return seconds;
}

std::string idOf(const std::string& row) { return row.substr(row.find(' ') + 1); }

}  // namespace

void Ledger::moveToOld(const std::vector<std::string>& ids) {
    const std::string now = std::to_string(std::time(nullptr)) + ' ';
    for (const std::string& id : ids) {
        if (old_.insert(id).second) oldRows_.push_back(now + id);
    }
    oldIsChanged_ = oldIsChanged_ || !ids.empty();
    dropAged();
}

// Rows stand in the order of their time.
void Ledger::dropAged() {
    const std::int64_t first = std::time(nullptr) - hours_ * kSecondsPerHour;
    auto end = oldRows_.begin();
    for (; end != oldRows_.end() && secondsOf(*end) < first; ++end) old_.erase(idOf(*end));
    oldIsChanged_ = oldIsChanged_ || end != oldRows_.begin();
    oldRows_.erase(oldRows_.begin(), end);
}

Ledger::Claim Ledger::claim(DatabaseSession& session) {
    session.begin();
    std::optional<LedgerRow> row = session.readLedger();
    if (!row) {
        if (epoch_ != 0) {
            session.rollback();
            return Claim::kTakenOver;
        }
        session.insertLedger();
        row = session.readLedger();
    }
    if (epoch_ != 0) {
        session.rollback();
        if (row->epoch != epoch_) return Claim::kTakenOver;
        found_ = std::move(row->ids);
        return Claim::kOurs;
    }
    known_.clear();
    written_.clear();
    found_.clear();
    old_.clear();
    oldRows_ = std::move(row->old);
    for (const std::string& one : oldRows_) old_.insert(idOf(one));
    moveToOld(row->ids);
    LedgerRow next{row->epoch + 1, {}, oldRows_};
    session.updateLedger(next, row->epoch);
    session.commit();
    epoch_ = next.epoch;
    oldIsChanged_ = false;
    isConfirmed_ = true;
    return Claim::kNew;
}

LedgerUpdate Ledger::update(const std::vector<std::string>& ids) {
    if (!isConfirmed_) moveToOld(written_);
    isConfirmed_ = true;
    return {epoch_, &ids, oldIsChanged_ ? &oldRows_ : nullptr};
}

void Ledger::isWritten(std::vector<std::string> ids) {
    known_.clear();
    written_ = std::move(ids);
    known_.insert(written_.begin(), written_.end());
    oldIsChanged_ = false;
    isConfirmed_ = false;
}

}  // namespace host
