// The session's part that reads and writes the ledger and the rejects.
#include <utility>

#include "host/database/PostgresSession.h"
#include "host/database/Schema.h"
#include "host/database/StoredText.h"

namespace host {

namespace {

KeptReject listedReject(const PostgresResult& result, int row) {
    KeptReject kept;
    kept.id = result.integer(row, 0);
    kept.source = result.text(row, 1);
    kept.messageId = result.text(row, 2);
    kept.at = result.text(row, 3);
    kept.replayedAt = result.text(row, 4);
    kept.reject = {stageOf(result.text(row, 5)), result.text(row, 6), result.text(row, 7),
                   result.text(row, 8)};
    kept.message.kind = result.text(row, 9);
    return kept;
}

constexpr char kListed[] =
    "SELECT id, source, message_id, to_char(at, 'YYYY-MM-DD HH24:MI:SS.MS'), "
    "to_char(replayed_at, 'YYYY-MM-DD HH24:MI:SS.MS'), stage, key, error, column_name, format";

}  // namespace

std::optional<LedgerRow> PostgresSession::readLedger() {
    PostgresParameters source;
    source.add(std::string_view(settings_.source));
    const PostgresResult row =
        query("SELECT epoch, array_to_string(ids, E'\\n'), array_to_string(old, E'\\n') FROM " +
                  tableName(kLedgerTable) + " WHERE source = $1::text FOR UPDATE",
              source);
    if (row.rows() == 0) return std::nullopt;
    return LedgerRow{row.integer(0, 0), linesOf(row.text(0, 1)), linesOf(row.text(0, 2))};
}

void PostgresSession::insertLedger() {
    PostgresParameters source;
    source.add(std::string_view(settings_.source));
    query("INSERT INTO " + tableName(kLedgerTable) +
              " (source, epoch, ids, old, at) VALUES ($1::text, 0, '{}', '{}', now()) ON CONFLICT DO NOTHING",
          source);
}

bool PostgresSession::updateLedger(const LedgerRow& row, std::int64_t epoch) {
    PostgresArray ids = textArray(row.ids), old = textArray(row.old);
    PostgresParameters values;
    values.add(row.epoch)
        .add(ids.bytes())
        .add(old.bytes())
        .add(std::string_view(settings_.source))
        .add(epoch);
    return query("UPDATE " + tableName(kLedgerTable) +
                     " SET epoch = $1::bigint, ids = $2::text[], old = $3::text[], at = now() "
                     "WHERE source = $4::text AND epoch = $5::bigint",
                 values)
               .affected() == 1;
}

DatabaseSession::Marked PostgresSession::markReplayed(std::int64_t id, const std::string& messageId) {
    PostgresParameters which;
    which.add(id).add(std::string_view(settings_.source)).add(std::string_view(messageId));
    const std::string table = tableName(kRejectedTable),
                      that = " WHERE id = $1::bigint AND source = $2::text AND message_id = $3::text";
    if (query("UPDATE " + table + " SET replayed_at = now()" + that + " AND replayed_at IS NULL", which)
            .affected() == 1)
        return Marked::kNow;
    return query("SELECT 1 FROM " + table + that, which).rows() == 1 ? Marked::kBefore : Marked::kUnknown;
}

std::int64_t PostgresSession::insertReject(const KeptReject& kept) {
    const std::string envelope = envelopeText(kept.message.envelope);
    PostgresParameters values;
    for (const std::string& text :
         {settings_.source, kept.messageId, std::string(nameOf(kept.reject.stage)), kept.reject.key,
          kept.reject.text, kept.reject.column, kept.message.kind, envelope})
        values.add(std::string_view(text));
    if (kept.message.body) {
        values.add(std::string_view(*kept.message.body));
    } else {
        values.addNull();
    }
    return query("INSERT INTO " + tableName(kRejectedTable) +
                     " (source, message_id, at, stage, key, error, column_name, format, envelope, body) "
                     "VALUES ($1::text, "
                     "$2::text, now(), $3::text, $4::text, $5::text, $6::text, $7::text, $8::text, "
                     "$9::bytea) RETURNING id",
                 values)
        .integer(0, 0);
}

std::vector<KeptReject> PostgresSession::listRejects(bool all, std::int64_t limit) {
    PostgresParameters which;
    which.add(std::string_view(settings_.source)).add(all).add(limit);
    const PostgresResult rows = query(std::string(kListed) + " FROM " + tableName(kRejectedTable) +
                                          " WHERE source = $1::text AND ($2::boolean OR replayed_at IS NULL) "
                                          "ORDER BY id DESC LIMIT $3::bigint",
                                      which);
    std::vector<KeptReject> found;
    for (int i = rows.rows() - 1; i >= 0; --i) found.push_back(listedReject(rows, i));
    return found;
}

std::optional<KeptReject> PostgresSession::loadReject(std::int64_t id) {
    PostgresParameters which;
    which.add(std::string_view(settings_.source)).add(id);
    const PostgresResult row =
        query(std::string(kListed) + ", encode(body, 'hex'), envelope FROM " + tableName(kRejectedTable) +
                  " WHERE source = $1::text AND id = $2::bigint",
              which);
    if (row.rows() == 0) return std::nullopt;
    KeptReject kept = listedReject(row, 0);
    if (!row.isNull(0, 10)) appendHexBytes(row.text(0, 10), kept.message.body.emplace());
    kept.message.envelope = envelopeFields(row.text(0, 11));
    return kept;
}

void PostgresSession::changeReason(std::int64_t id, const Reject& reject) {
    PostgresParameters values;
    for (const std::string& text :
         {std::string(nameOf(reject.stage)), reject.key, reject.text, reject.column})
        values.add(std::string_view(text));
    values.add(id);
    query("UPDATE " + tableName(kRejectedTable) +
              " SET stage = $1::text, key = $2::text, error = $3::text, column_name = $4::text WHERE id = "
              "$5::bigint",
          values);
}

}  // namespace host
