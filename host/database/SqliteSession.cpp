#include "host/database/SqliteSession.h"

#include <sqlite3.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <utility>

#include "host/database/RowStatements.h"
#include "host/database/Schema.h"
#include "host/database/StoredText.h"
#include "host/database/Unavailable.h"
#include "host/process/Failure.h"
#include "host/values/ModifiedUtf8.h"
#include "host/values/Text.h"

namespace host {

namespace {

constexpr int kGraceMillis = 3000;
constexpr int kPrimary = 0xFF;  // of an extended code
constexpr char kNow[] = "strftime('%Y-%m-%d %H:%M:%f', 'now')";

std::string fileOf(const std::string& url) {
    std::string file = url.substr(url.find(':') + 1);
    if (file.starts_with("//")) file.erase(0, 2);
    if (file.empty() || file == ":memory:")
        throw Failure("sink.url is " + inQuotes(url) + ", which names no file; it is sqlite:FILE.",
                      kBadConfiguration);
    return file;
}

// The statement's row is at fault, and it alone.
bool isOfRow(int code) {
    const int primary = code & kPrimary;
    return primary == SQLITE_CONSTRAINT || primary == SQLITE_MISMATCH || primary == SQLITE_TOOBIG;
}

struct Passing {
    int primary;
    const char* reason;  // null: SQLite's own
};
constexpr Passing kPassing[] = {
    {SQLITE_BUSY, "another program writes into its file"},
    {SQLITE_LOCKED, nullptr},
    {SQLITE_FULL, "its disk is full"},
    {SQLITE_IOERR, nullptr},
    {SQLITE_NOMEM, nullptr},
    {SQLITE_INTERRUPT, nullptr},
    {SQLITE_PROTOCOL, nullptr},
};

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) (text += line) += '\n';
    return text;
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> all;
    for (size_t begin = 0, end = 0; (end = text.find('\n', begin)) != std::string::npos; begin = end + 1)
        all.push_back(text.substr(begin, end - begin));
    return all;
}

DatabaseError errorOf(const SqliteError& error) {
    constexpr std::string_view kNotNull = "NOT NULL constraint failed: ";
    const std::string text = error.what();
    const std::string column = text.starts_with(kNotNull) ? text.substr(text.rfind('.') + 1) : "";
    return {std::to_string(error.code), text, column};
}

}  // namespace

SqliteSession::SqliteSession(const SinkSettings& settings, const RowType& type, Access access)
    : settings_(settings),
      type_(type),
      access_(access),
      file_(fileOf(settings.url)),
      refusals_(settings.mode, type),
      lock_(file_, settings.source, settings.leaseSeconds) {}

// After a stop shorter, but a batch that needs a moment still gets through.
bool SqliteSession::waitsOn(int millis) const {
    return millis < (stop_.isStopped() ? std::min<std::int64_t>(kGraceMillis, settings_.lockTimeoutMillis)
                                       : settings_.lockTimeoutMillis);
}

void SqliteSession::fail(const SqliteError& error) const {
    const int primary = error.code & kPrimary;
    for (const Passing& one : kPassing) {
        if (one.primary == primary) throw Unavailable(one.reason != nullptr ? one.reason : error.what());
    }
    const char* what = primary == SQLITE_CANTOPEN                              ? " cannot be opened: "
                       : primary == SQLITE_READONLY || primary == SQLITE_PERM  ? " cannot be written: "
                       : primary == SQLITE_NOTADB || primary == SQLITE_CORRUPT ? " cannot be used: "
                                                                               : " fails: ";
    throw Failure("The database file " + file_ + what + error.what() + '.');
}

template <typename Action>
auto SqliteSession::guarded(Action action) {
    try {
        return action();
    } catch (const SqliteError& error) {
        fail(error);
    }
}

bool SqliteSession::connect() {
    if (connection_) return false;
    const bool isThere = std::filesystem::exists(file_);
    if (!isThere && !settings_.create && access_ == Access::kWrite)
        throw Failure("The database file " + file_ + " does not exist; set sink.create, or create it.");
    if (const std::filesystem::path folder = std::filesystem::path(file_).parent_path();
        !folder.empty() && !std::filesystem::is_directory(folder))
        throw Failure("The database file " + file_ + " cannot be opened: there is no folder " +
                      folder.string() + '.');
    const bool isLook = access_ == Access::kLook;
    const int flags = SQLITE_OPEN_READWRITE | (settings_.create && !isLook ? SQLITE_OPEN_CREATE : 0);
    guarded([&] {
        connection_.emplace(isLook && !isThere ? ":memory:" : file_, flags,
                            [this](int millis) { return waitsOn(millis); });
        // What exists keeps its journal; the other writes once where a rollback journal writes twice.
        SqliteStatement tables = connection().prepare("SELECT count(*) FROM sqlite_schema");
        tables.step();
        const bool isNew = tables.integer(0) == 0;
        tables.step();
        if (isNew && !isLook) connection().execute("PRAGMA journal_mode = WAL");
        // FULL: a power cut must not take rows whose messages are gone.
        connection().execute("PRAGMA synchronous = FULL; PRAGMA foreign_keys = ON");
    });
    return true;
}

void SqliteSession::disconnect() {
    rows_ = {};
    connection_.reset();
}

std::string SqliteSession::tableName(const std::string& table) const { return quotedName(table); }

std::optional<TableShape> SqliteSession::shapeOf(const std::string& table) {
    return guarded([&]() -> std::optional<TableShape> {
        SqliteStatement columns = connection().prepare(
            "SELECT c.name, c.type, c.\"notnull\" <> 0 AND c.dflt_value IS NULL, c.hidden, c.pk FROM "
            "sqlite_schema s, "
            "pragma_table_xinfo(s.name) c WHERE s.type = 'table' AND s.name = ?1 COLLATE NOCASE ORDER BY "
            "c.cid");
        TableShape shape;
        std::vector<std::string> primary;
        columns.bind(1, table);
        while (columns.step()) {
            constexpr int kFirstComputed = 2;
            const bool isComputed = columns.integer(3) >= kFirstComputed;
            shape.columns.push_back(
                {columns.text(0), databaseType(columns.text(1)), columns.integer(2) != 0, isComputed});
            if (columns.integer(4) != 0) primary.push_back(columns.text(0));
        }
        if (shape.columns.empty()) return std::nullopt;
        if (!primary.empty()) shape.uniqueIndexes.push_back(primary);
        SqliteStatement indexes = connection().prepare(
            "SELECT l.seq, i.name FROM pragma_index_list(?1) l, pragma_index_info(l.name) i "
            "WHERE l.\"unique\" AND NOT l.partial ORDER BY l.seq, i.seqno");
        indexes.bind(1, table);
        for (std::int64_t last = -1; indexes.step(); last = indexes.integer(0)) {
            if (indexes.integer(0) != last) shape.uniqueIndexes.emplace_back();
            shape.uniqueIndexes.back().push_back(indexes.text(1));
        }
        return shape;
    });
}

void SqliteSession::create(const std::vector<std::string>& statements) {
    begin();
    guarded([&] {
        for (std::string statement : statements) {
            // Another host may have been quicker.
            statement.insert(std::string_view("CREATE TABLE").size(), " IF NOT EXISTS");
            connection().execute(statement);
        }
        connection().execute("COMMIT");
    });
}

void SqliteSession::prepare(const TableShape&) {
    const RowStatements texts(settings_.mode, type_, tableName(settings_.table),
                              [](size_t column) { return '?' + std::to_string(column + 1); });
    rows_ = {};
    rows_.keys = texts.keyColumns();
    rows_.texts.resize(type_.columns.size());
    for (const Column& column : type_.columns) rows_.forms.push_back(valueForm(column.type));
    guarded([&] {
        rows_.insert = connection().prepare(texts.insert());
        if (settings_.mode == SinkMode::kAppend) return;
        rows_.update = connection().prepare(texts.update());
        rows_.remove = connection().prepare(texts.remove());
        rows_.upsert = connection().prepare(texts.upsert());
    });
}

void SqliteSession::begin() {
    // A transaction that begins with reading could not wait for another writer.
    guarded([&] {
        connection().execute("BEGIN IMMEDIATE");
        SqliteStatement now = connection().prepare(std::string("SELECT ") + kNow);
        now.step();
        now_ = now.text(0);
    });
}

std::optional<LedgerRow> SqliteSession::readLedger() {
    return guarded([&]() -> std::optional<LedgerRow> {
        SqliteStatement row =
            connection().prepare("SELECT epoch, ids, old FROM kel_ledger WHERE source = ?1");
        row.bind(1, settings_.source);
        if (!row.step()) return std::nullopt;
        return LedgerRow{row.integer(0), lines(row.text(1)), lines(row.text(2))};
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

bool SqliteSession::markReplayed(std::int64_t id) {
    return guarded([&] {
        connection()
            .prepare("UPDATE kel_rejected SET replayed_at = ?1 WHERE id = ?2 AND replayed_at IS NULL")
            .bind(1, now_)
            .bind(2, id)
            .run();
        return connection().changes() == 1;
    });
}

SqliteStatement& SqliteSession::statementFor(char op) {
    if (settings_.mode == SinkMode::kAppend || op == 'i') return *rows_.insert;
    return op == 'u' ? *rows_.update : op == 'p' ? *rows_.upsert : *rows_.remove;
}

void SqliteSession::bindValue(SqliteStatement& statement, size_t column, const Value& value) {
    const int parameter = static_cast<int>(column) + 1;
    if (isNull(value)) {
        statement.bindNull(parameter);
    } else if (const auto* flag = std::get_if<bool>(&value)) {
        statement.bind(parameter, std::int64_t{*flag ? 1 : 0});
    } else if (const auto* integer = std::get_if<std::int64_t>(&value)) {
        statement.bind(parameter, *integer);
    } else if (const auto* number = std::get_if<double>(&value)) {
        statement.bind(parameter, *number);
    } else {
        const auto& text = std::get<std::string>(value);
        std::string& held = rows_.texts[column];
        held.clear();
        std::int64_t count = 0;
        switch (rows_.forms[column]) {
            case ValueForm::kMicroseconds:
                std::from_chars(text.data(), text.data() + text.size(), count);
                statement.bind(parameter, count);
                break;
            case ValueForm::kBytes:
                appendHexBytes(text, held);
                statement.bindBytes(parameter, held);
                break;
            default:
                appendUtf8(text, held);
                statement.bind(parameter, std::string_view(held));
        }
    }
}

void SqliteSession::bindRow(SqliteStatement& statement, const Change& change) {
    const ServerRow& row = *change.row;
    if (&statement == (rows_.remove ? &*rows_.remove : nullptr)) {
        for (const size_t column : rows_.keys) bindValue(statement, column, row.values[column]);
        return;
    }
    for (size_t i = 0; i < row.values.size(); ++i) bindValue(statement, i, row.values[i]);
    if (settings_.mode == SinkMode::kApply) return;
    const int next = static_cast<int>(row.values.size()) + 1;
    statement.bind(next, std::string_view(&row.op, 1)).bind(next + 1, row.sequence);
    statement.bind(next + 2, *change.messageId).bind(next + 3, now_);
}

std::optional<Reject> SqliteSession::writeOne(const Change& change) {
    const ServerRow& row = *change.row;
    if (std::optional<Reject> unfit = refusals_.unfit(row)) return unfit;
    try {
        SqliteStatement& statement = statementFor(row.op);
        bindRow(statement, change);
        statement.run();
        return connection().changes() == 0 ? refusals_.withoutEffect(row) : std::nullopt;
    } catch (const SqliteError& error) {
        if (!isOfRow(error.code)) throw;
        if (!connection().isInTransaction())
            throw Failure("The table " + quotedName(settings_.table) + " ends transactions by itself (" +
                          error.what() + "); no trigger or ON CONFLICT ROLLBACK may do that.");
        return refusals_.refused(row, errorOf(error));
    }
}

std::optional<Reject> SqliteSession::writeAlone(const Change& change) {
    connection().execute("SAVEPOINT one");
    std::optional<Reject> reject = writeOne(change);
    if (!reject && connection().hasBrokenReferences()) {
        const DatabaseError error{std::to_string(SQLITE_CONSTRAINT_FOREIGNKEY),
                                  "FOREIGN KEY constraint failed", ""};
        reject = refusals_.refused(*change.row, error);
        connection().execute("ROLLBACK TO one");
    }
    connection().execute("RELEASE one");
    return reject;
}

bool SqliteSession::write(const LedgerUpdate* ledger, const std::vector<Change>& changes, Care care,
                          std::vector<Refused>& refused) {
    refused.clear();
    return guarded([&] {
        if (ledger != nullptr && !writeLedger(*ledger)) return false;
        for (size_t i = 0; i < changes.size(); ++i) {
            std::optional<Reject> reject =
                care == Care::kStrict ? writeAlone(changes[i]) : writeOne(changes[i]);
            if (reject) refused.push_back({i, std::move(*reject)});
        }
        return true;
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

namespace {

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

bool SqliteSession::commit() {
    try {
        connection().execute("COMMIT");
        return true;
    } catch (const SqliteError& error) {
        rollback();
        if (isOfRow(error.code)) return false;
        fail(error);
    }
}

// What a full disk or a failing one leaves of a connection is not trusted.
void SqliteSession::rollback() {
    if (!connection_ || !connection().isInTransaction()) return;
    try {
        connection().execute("ROLLBACK");
    } catch (const SqliteError&) {
        disconnect();
    }
}

}  // namespace host
