// Which messages a source has kept, so that none is kept twice.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "host/database/DatabaseSession.h"

namespace host {

// The ledger's row of one source, here and in the database. The messages of the batch last written stand in
// `ids`, until the next is written; where the provider has not confirmed them they are moved to `old`, and
// stay there for some hours.
//
// Every host that takes the source over counts the epoch up, and each batch asks for the own epoch: what a
// host writes that was taken for dead is not committed.
class Ledger {
public:
    explicit Ledger(std::int64_t hours) : hours_(hours) {}

    enum class Claim {
        kOurs,       // as before: nobody else has written
        kNew,        // begun, or taken over from another host or an earlier start
        kTakenOver,  // somebody else's: it was ours before
    };
    // In a transaction of its own on a session that has the source's lock.
    Claim claim(DatabaseSession& session);

    bool isClaimed() const { return epoch_ != 0; }

    // The next claim begins anew.
    void giveUp() { epoch_ = 0; }

    bool knows(const std::string& id) const {
        return known_.count(id) > 0 || (!old_.empty() && old_.count(id) > 0);
    }

    // What goes into the transaction of a batch; valid until the next call that is not const.
    LedgerUpdate update(const std::vector<std::string>& ids);

    // The transaction of that batch was committed.
    void isWritten(std::vector<std::string> ids);

    // Whether the provider has confirmed what was written last; asked for by every batch.
    void settled(bool isConfirmed) { isConfirmed_ = isConfirmed; }

    // Whether the transaction of that batch is in what the last claim found.
    bool wasCommitted(const std::vector<std::string>& ids) const { return found_ == ids; }

private:
    void moveToOld(const std::vector<std::string>& ids);
    void dropAged();

    const std::int64_t hours_;
    std::int64_t epoch_ = 0;  // 0: none is ours
    bool isConfirmed_ = true;
    std::vector<std::string> written_;            // `ids` as this host wrote them last
    std::unordered_set<std::string_view> known_;  // the same
    std::vector<std::string> found_;              // `ids` as they stood in the database at the last claim
    std::vector<std::string> oldRows_;            // `old` as it should stand there
    bool oldIsChanged_ = false;
    std::unordered_set<std::string> old_;
};

}  // namespace host
