// The session's part that writes a batch: in two trips, and around the rows that the database refuses.
#include <algorithm>
#include <utility>

#include "host/database/PostgresErrors.h"
#include "host/database/PostgresSession.h"

namespace host {

namespace {

constexpr int kMostRepeats = 3;  // of a whole batch; then a savepoint for each row costs less

DatabaseError errorOf(const PostgresError& error) { return {error.code, error.what(), error.column}; }

}  // namespace

// How many statements are sent with it.
size_t PostgresSession::sendBegin(const LedgerUpdate* ledger) {
    size_t sent = 0;
    if (beginIsDue_) {
        connection_->sendText("BEGIN ISOLATION LEVEL READ COMMITTED");
        ++sent;
        isInTransaction_ = true;
        beginIsDue_ = false;
    }
    if (ledger == nullptr) return sent;
    PostgresArray ids = textArray(*ledger->ids);
    PostgresParameters parameters;
    parameters.add(std::string_view(settings_.source)).add(ledger->epoch).add(ids.bytes());
    if (ledger->old != nullptr) parameters.add(textArray(*ledger->old).bytes());
    connection_->send(ledger->old != nullptr ? kLedgerWithOld : kLedgerOfBatch, parameters);
    return sent + 1;
}

// Whether the epoch is still ours.
bool PostgresSession::receiveBegin(const LedgerUpdate* ledger, size_t sent) {
    for (size_t i = 0; i + (ledger != nullptr ? 1 : 0) < sent; ++i) connection_->receive();
    return ledger == nullptr || connection_->receive().affected() == 1;
}

// All in one statement or two, which tell no rows apart: where anything is wrong, nothing is done.
PostgresSession::Outcome PostgresSession::writeTogether(const Attempt& attempt) {
    std::vector<const Change*> changes;
    for (const size_t i : attempt.left) changes.push_back(&attempt.changes[i]);
    const size_t sent = sendBegin(attempt.ledger);
    connection_->push();
    const std::vector<std::optional<size_t>> counts = rows_->sendTogether(*connection_, changes);
    connection_->sync();
    if (!receiveBegin(attempt.ledger, sent)) return Outcome::kNotOurs;
    try {
        for (const std::optional<size_t>& count : counts) {
            const std::int64_t affected = connection_->receive().affected();
            if (count && affected != static_cast<std::int64_t>(*count)) return Outcome::kFailed;
        }
    } catch (const PostgresError& error) {
        if (!isOfRow(error.code)) throw;
        return Outcome::kFailed;
    }
    connection_->finish();
    return Outcome::kDone;
}

// A statement for each; the first that fails is put down and takes all others with it.
PostgresSession::Outcome PostgresSession::writeRows(Attempt& attempt) {
    const size_t sent = sendBegin(attempt.ledger);
    for (const size_t i : attempt.left) rows_->send(*connection_, attempt.changes[i]);
    connection_->sync();
    if (!receiveBegin(attempt.ledger, sent)) return Outcome::kNotOurs;
    std::vector<Refused> ineffective;
    for (auto i = attempt.left.begin(); i != attempt.left.end(); ++i) {
        const ServerRow& row = *attempt.changes[*i].row;
        try {
            if (connection_->receive().affected() > 0) continue;
            if (std::optional<Reject> reject = rows_->refusals().withoutEffect(row))
                ineffective.push_back({*i, std::move(*reject)});
        } catch (const PostgresError& error) {
            if (!isOfRow(error.code)) throw;
            attempt.refused.push_back({*i, rows_->refusals().refused(row, errorOf(error))});
            attempt.left.erase(i);
            return Outcome::kFailed;
        }
    }
    connection_->finish();
    std::move(ineffective.begin(), ineffective.end(), std::back_inserter(attempt.refused));
    return Outcome::kDone;
}

void PostgresSession::writeWithSavepoint(Attempt& attempt, size_t change) {
    const ServerRow& row = *attempt.changes[change].row;
    connection_->sendText("SAVEPOINT one");
    rows_->send(*connection_, attempt.changes[change]);
    connection_->sendText("RELEASE SAVEPOINT one");
    connection_->sync();
    std::optional<Reject> reject;
    try {
        connection_->receive();
        if (connection_->receive().affected() == 0) reject = rows_->refusals().withoutEffect(row);
        connection_->receive();
        connection_->finish();
    } catch (const PostgresError& error) {
        if (!isOfRow(error.code)) throw;
        connection_->finish();
        reject = rows_->refusals().refused(row, errorOf(error));
        connection_->query("ROLLBACK TO SAVEPOINT one");
    }
    if (reject) attempt.refused.push_back({change, std::move(*reject)});
}

bool PostgresSession::writeWithSavepoints(Attempt& attempt, Care care) {
    const size_t sent = sendBegin(attempt.ledger);
    connection_->sync();
    if (!receiveBegin(attempt.ledger, sent)) return false;
    connection_->finish();
    if (care == Care::kStrict) connection_->query("SET CONSTRAINTS ALL IMMEDIATE");
    for (const size_t i : attempt.left) writeWithSavepoint(attempt, i);
    return true;
}

bool PostgresSession::write(const LedgerUpdate* ledger, const std::vector<Change>& changes, Care care,
                            std::vector<Refused>& refused) {
    refused.clear();
    Attempt attempt{ledger, changes, {}, refused};
    for (size_t i = 0; i < changes.size(); ++i) {
        if (std::optional<Reject> reject = rows_->unfit(*changes[i].row)) {
            refused.push_back({i, std::move(*reject)});
        } else {
            attempt.left.push_back(i);
        }
    }
    const bool isOurs = guarded([&] {
        if (care != Care::kInOneGo) return writeWithSavepoints(attempt, care);
        bool isTogether = rows_->canBring(changes);
        for (int repeats = 0; repeats < kMostRepeats; ++repeats) {
            const Outcome outcome = isTogether ? writeTogether(attempt) : writeRows(attempt);
            if (outcome != Outcome::kFailed) return outcome == Outcome::kDone;
            isTogether = false;
            beginAnew();
        }
        return writeWithSavepoints(attempt, care);
    });
    std::sort(refused.begin(), refused.end(),
              [](const Refused& a, const Refused& b) { return a.change < b.change; });
    return isOurs;
}

}  // namespace host
