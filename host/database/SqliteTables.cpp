// The session's part that reads and writes the ledger and the rejects.
#include <algorithm>
#include <utility>

#include "host/database/SqliteSession.h"
#include "host/database/StoredText.h"

namespace host {

namespace {

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) (text += line) += '\n';
    return text;
}

KeptReject listedReject(const SqliteStatement& row) {
    KeptReject kept;
    kept.id = row.integer(0);
    kept.source = row.text(1);
    kept.messageId = row.text(2);
    kept.at = row.text(3);
    kept.replayedAt = row.text(4);
    kept.reject = {stageOf(row.text(5)), row.text(6), row.text(7), row.text(8)};
    kept.message.kind = row.text(9);
    return kept;
}

constexpr char kListed[] =
    "SELECT id, source, message_id, at, replayed_at, stage, key, error, column_name, format";

}  // namespace

std::optional<LedgerRow> SqliteSession::readLedger() {
    return guarded([&]() -> std::optional<LedgerRow> {
        SqliteStatement row =
            connection().prepare("SELECT epoch, ids, old FROM kel_ledger WHERE source = ?1");
        row.bind(1, settings_.source);
        if (!row.step()) return std::nullopt;
        return LedgerRow{row.integer(0), linesOf(row.text(1)), linesOf(row.text(2))};
    });
}

void SqliteSession::insertLedger() {
    guarded([&] {
        connection()
            .prepare("INSERT INTO kel_ledger (source, epoch, ids, old, at) VALUES (?1, 0, '', '', ?2)")
            .bind(1, settings_.source)
            .bind(2, now_)
            .run();
    });
}

bool SqliteSession::updateLedger(const LedgerRow& row, std::int64_t epoch) {
    return guarded([&] {
        const std::string ids = joined(row.ids), old = joined(row.old);
        connection()
            .prepare(
                "UPDATE kel_ledger SET epoch = ?1, ids = ?2, old = ?3, at = ?4 WHERE source = ?5 AND epoch = "
                "?6")
            .bind(1, row.epoch)
            .bind(2, ids)
            .bind(3, old)
            .bind(4, now_)
            .bind(5, settings_.source)
            .bind(6, epoch)
            .run();
        return connection().changes() == 1;
    });
}

bool SqliteSession::writeLedger(const LedgerUpdate& update) {
    const std::string ids = joined(*update.ids), old = update.old != nullptr ? joined(*update.old) : "";
    SqliteStatement statement = connection().prepare(
        update.old != nullptr
            ? "UPDATE kel_ledger SET ids = ?1, at = ?2, old = ?5 WHERE source = ?3 AND epoch = ?4"
            : "UPDATE kel_ledger SET ids = ?1, at = ?2 WHERE source = ?3 AND epoch = ?4");
    statement.bind(1, ids).bind(2, now_).bind(3, settings_.source).bind(4, update.epoch);
    if (update.old != nullptr) statement.bind(5, old);
    statement.run();
    return connection().changes() == 1;
}

DatabaseSession::Marked SqliteSession::markReplayed(std::int64_t id, const std::string& messageId) {
    return guarded([&] {
        const std::string that = " WHERE id = ?1 AND source = ?2 AND message_id = ?3";
        SqliteStatement mark = connection().prepare("UPDATE kel_rejected SET replayed_at = ?4" + that +
                                                    " AND replayed_at IS NULL");
        mark.bind(1, id).bind(2, settings_.source).bind(3, messageId).bind(4, now_).run();
        if (connection().changes() == 1) return Marked::kNow;
        SqliteStatement look = connection().prepare("SELECT 1 FROM kel_rejected" + that);
        look.bind(1, id).bind(2, settings_.source).bind(3, messageId);
        return look.step() ? Marked::kBefore : Marked::kUnknown;
    });
}

std::int64_t SqliteSession::insertReject(const KeptReject& kept) {
    return guarded([&] {
        SqliteStatement statement = connection().prepare(
            "INSERT INTO kel_rejected (source, message_id, at, stage, key, error, column_name, format, body, "
            "envelope) "
            "VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10)");
        const std::string envelope = envelopeText(kept.message.envelope);
        statement.bind(1, settings_.source).bind(2, kept.messageId).bind(3, now_);
        statement.bind(4, nameOf(kept.reject.stage)).bind(5, kept.reject.key).bind(6, kept.reject.text);
        statement.bind(7, kept.reject.column).bind(8, kept.message.kind).bind(10, envelope);
        if (kept.message.body) statement.bindBytes(9, *kept.message.body);
        statement.run();
        return connection().lastRowId();
    });
}

std::vector<KeptReject> SqliteSession::listRejects(bool all, std::int64_t limit) {
    return guarded([&] {
        SqliteStatement rows =
            connection().prepare(std::string(kListed) +
                                 " FROM kel_rejected WHERE source = ?1 AND (?2 OR replayed_at IS NULL) "
                                 "ORDER BY id DESC LIMIT ?3");
        rows.bind(1, settings_.source).bind(2, std::int64_t{all ? 1 : 0}).bind(3, limit);
        std::vector<KeptReject> found;
        while (rows.step()) found.push_back(listedReject(rows));
        std::reverse(found.begin(), found.end());
        return found;
    });
}

std::optional<KeptReject> SqliteSession::loadReject(std::int64_t id) {
    return guarded([&]() -> std::optional<KeptReject> {
        SqliteStatement row = connection().prepare(
            std::string(kListed) + ", body, envelope FROM kel_rejected WHERE source = ?1 AND id = ?2");
        row.bind(1, settings_.source).bind(2, id);
        if (!row.step()) return std::nullopt;
        KeptReject kept = listedReject(row);
        if (!row.isNull(10)) kept.message.body = row.text(10);
        kept.message.envelope = envelopeFields(row.text(11));
        return kept;
    });
}

void SqliteSession::changeReason(std::int64_t id, const Reject& reject) {
    guarded([&] {
        connection()
            .prepare(
                "UPDATE kel_rejected SET stage = ?1, key = ?2, error = ?3, column_name = ?4 WHERE id = ?5")
            .bind(1, nameOf(reject.stage))
            .bind(2, reject.key)
            .bind(3, reject.text)
            .bind(4, reject.column)
            .bind(5, id)
            .run();
    });
}

}  // namespace host
