#include "host/database/PostgresSession.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "host/database/PostgresErrors.h"
#include "host/database/Schema.h"
#include "host/database/StoredText.h"
#include "host/database/Unavailable.h"
#include "host/process/Failure.h"
#include "host/values/Text.h"

namespace host {

namespace {

constexpr std::chrono::seconds kSilence(5);  // beyond the statement's own limit
constexpr int kSignsPerLease = 4;
constexpr int kHasIdleTimeout = 140'000;
constexpr char kNoPermission[] = "42501";

std::chrono::milliseconds silence(const SinkSettings& settings) {
    if (settings.statementTimeoutMillis == 0) return std::chrono::hours(24);
    return std::chrono::milliseconds(settings.statementTimeoutMillis) + kSilence;
}

// Whatever the role or the database has for these.
std::vector<std::string> sessionSettings(const SinkSettings& settings, int version) {
    const std::string lease = std::to_string(settings.leaseSeconds) + "s'";
    // A commit that the server only promises may be gone after a power cut, and its messages with it.
    constexpr char kDurable[] =
        "SELECT set_config('synchronous_commit', 'on', false) "
        "WHERE current_setting('synchronous_commit') IN ('off', 'local')";
    std::vector<std::string> all = {
        kDurable,
        "SET timezone = 'UTC'",
        "SET datestyle = 'ISO, YMD'",
        "SET standard_conforming_strings = on",
        "SET client_min_messages = error",
        "SET statement_timeout = " + std::to_string(settings.statementTimeoutMillis),
        "SET lock_timeout = " + std::to_string(settings.lockTimeoutMillis),
        // A host that stands still must not hold the source for ever.
        "SET idle_in_transaction_session_timeout = '" + lease,
    };
    if (version >= kHasIdleTimeout) {
        all.push_back("SET idle_session_timeout = '" + lease);
        all.push_back("SET client_connection_check_interval = '2s'");
        // A ledger's IDs are long and much alike; the other method takes as long for them as for all the
        // rows.
        all.push_back(
            "SELECT set_config(name, 'lz4', false) FROM pg_settings WHERE name = 'default_toast_compression' "
            "AND 'lz4' = ANY (enumvals)");
    }
    return all;
}

// The type as people write it.
DatabaseType plainType(const std::string& text) {
    constexpr std::pair<const char*, const char*> kNames[] = {
        {"timestamp without time zone", "timestamp"},
        {"timestamp with time zone", "timestamptz"},
        {"time without time zone", "time"},
        {"character varying", "varchar"},
    };
    DatabaseType type = databaseType(text);
    for (const auto& [full, plain] : kNames) {
        if (type.name == full) type.name = plain;
    }
    return type;
}

}  // namespace

PostgresSession::PostgresSession(const SinkSettings& settings, const RowType& type, Access)
    : settings_(settings), type_(type) {}

void PostgresSession::fail(const PostgresError& error) {
    const std::string text = error.what();
    if (!connection_ || connection_->isLost() || error.code.empty() || isPassing(error.code))
        throw Unavailable(reasonOf(error.code, text));
    if (error.code == kNoPermission) throw Failure("The database does not allow it: " + text + '.');
    throw Failure("The database cannot do it: " + text + " (" + error.code + ").");
}

bool PostgresSession::connect() {
    if (connection_ && !connection_->isLost()) return false;
    disconnect();
    guarded([&] {
        connection_.emplace(settings_.url, silence(settings_), stop_);
        const std::vector<std::string> all = sessionSettings(settings_, connection_->version());
        for (const std::string& one : all) connection_->sendText(one);
        connection_->sync();
        for (size_t i = 0; i < all.size(); ++i) connection_->receive();
        connection_->finish();
    });
    return true;
}

void PostgresSession::disconnect() {
    connection_.reset();
    beginIsDue_ = isInTransaction_ = isLocked_ = false;
}

PostgresResult PostgresSession::query(const std::string& statement, PostgresParameters& parameters) {
    return guarded([&] {
        const size_t sent = sendBegin(nullptr);
        connection_->sendText(statement, parameters);
        connection_->sync();
        receiveBegin(nullptr, sent);
        PostgresResult result = connection_->receive();
        connection_->finish();
        return result;
    });
}

PostgresResult PostgresSession::query(const std::string& statement) {
    PostgresParameters none;
    return query(statement, none);
}

std::string PostgresSession::tableName(const std::string& table) const {
    return quotedName(settings_.schema) + '.' + quotedName(table);
}

std::optional<TableShape> PostgresSession::shapeOf(const std::string& table) {
    constexpr char kColumns[] =
        "SELECT a.attname, format_type(CASE t.typtype WHEN 'd' THEN t.typbasetype ELSE a.atttypid END, "
        "CASE t.typtype WHEN 'd' THEN t.typtypmod ELSE a.atttypmod END), "
        "(a.attnotnull AND NOT a.atthasdef AND a.attidentity = '')::int, "
        "(a.attgenerated <> '' OR a.attidentity = 'a')::int "
        "FROM pg_class c JOIN pg_namespace n ON n.oid = c.relnamespace JOIN pg_attribute a ON a.attrelid = "
        "c.oid "
        "JOIN pg_type t ON t.oid = a.atttypid WHERE n.nspname = $1::text AND c.relname = $2::text "
        "AND c.relkind IN ('r', 'p') AND a.attnum > 0 AND NOT a.attisdropped ORDER BY a.attnum";
    // One that is checked later, or only for some rows, decides nothing when a row is written.
    constexpr char kIndexes[] =
        "SELECT i.indexrelid::bigint, a.attname FROM pg_class c JOIN pg_namespace n ON n.oid = "
        "c.relnamespace "
        "JOIN pg_index i ON i.indrelid = c.oid JOIN pg_attribute a ON a.attrelid = i.indexrelid "
        "WHERE n.nspname = $1::text AND c.relname = $2::text AND i.indisunique AND i.indimmediate AND "
        "i.indisvalid "
        "AND i.indpred IS NULL AND i.indexprs IS NULL AND a.attnum <= i.indnkeyatts ORDER BY 1, a.attnum";
    PostgresParameters name;
    name.add(std::string_view(settings_.schema)).add(std::string_view(table));
    const PostgresResult columns = query(kColumns, name);
    if (columns.rows() == 0) return std::nullopt;
    TableShape shape;
    for (int i = 0; i < columns.rows(); ++i)
        shape.columns.push_back({columns.text(i, 0), plainType(columns.text(i, 1)),
                                 columns.integer(i, 2) != 0, columns.integer(i, 3) != 0});
    const PostgresResult indexes = query(kIndexes, name);
    for (int i = 0; i < indexes.rows(); ++i) {
        if (i == 0 || indexes.integer(i, 0) != indexes.integer(i - 1, 0)) shape.uniqueIndexes.emplace_back();
        shape.uniqueIndexes.back().push_back(indexes.text(i, 1));
    }
    return shape;
}

void PostgresSession::create(const std::vector<std::string>& statements) {
    begin();
    // Two that make the same table at once would fail by the catalogue's own index.
    query("SELECT pg_advisory_xact_lock(hashtext('kel-adapter-host'), hashtext('create'))");
    for (std::string statement : statements)
        query(statement.insert(std::string_view("CREATE TABLE").size(), " IF NOT EXISTS"));
    commit();
}

void PostgresSession::prepare(const TableShape& shape) {
    guarded([&] {
        rows_.emplace(settings_.mode, type_, tableName(settings_.table), shape);
        rows_->prepare(*connection_);
        const std::string ledger = "UPDATE " + tableName(kLedgerTable) + " SET at = now(), ids = $3::text[]";
        const std::string ours = " WHERE source = $1::text AND epoch = $2::bigint";
        connection_->sendPrepare(kLedgerOfBatch, ledger + ours);
        connection_->sendPrepare(kLedgerWithOld, ledger + ", old = $4::text[]" + ours);
        connection_->sync();
        connection_->receive();
        connection_->receive();
        connection_->finish();
    });
}

std::optional<Holder> PostgresSession::lockSource() {
    if (isLocked_) return std::nullopt;
    const std::string keys =
        "hashtext($1::text), hashtext($2::text)";  // of the ledger's place, and of the source
    PostgresParameters names;
    names.add(std::string_view(tableName(kLedgerTable))).add(std::string_view(settings_.source));
    isLocked_ = query("SELECT pg_try_advisory_lock(" + keys + ")::int", names).integer(0, 0) == 1;
    if (isLocked_) return std::nullopt;
    const PostgresResult other = query(
        "SELECT extract(epoch FROM a.backend_start)::bigint, a.application_name FROM pg_locks l "
        "JOIN pg_stat_activity a USING (pid) WHERE l.locktype = 'advisory' AND l.granted AND l.objsubid = 2 "
        "AND l.database = (SELECT oid FROM pg_database WHERE datname = current_database()) "
        "AND (l.classid::bigint, l.objid::bigint) = (hashtext($1::text)::bigint & 4294967295, "
        "hashtext($2::text)::bigint & 4294967295)",
        names);
    Holder holder;
    if (other.rows() == 0) return holder;
    holder.since = other.integer(0, 0);
    const std::string name = other.text(0, 1);
    holder.process = std::atoi(name.c_str() + name.rfind(' ') + 1);
    return holder;
}

// The server ends a session that says nothing for the lease.
void PostgresSession::signOfLife() {
    const auto isDue = std::chrono::seconds(settings_.leaseSeconds) / kSignsPerLease;
    if (!connection_ || connection_->isLost() || Clock::now() - lastUse_ < isDue) return;
    query("SELECT 1");
}

void PostgresSession::beginAnew() {
    guarded([&] { connection_->finish(); });
    isInTransaction_ = false;
    query("ROLLBACK");
    begin();
}

bool PostgresSession::commit() {
    if (beginIsDue_) {
        beginIsDue_ = false;
        return true;
    }
    try {
        lastUse_ = Clock::now();
        const PostgresResult result = connection_->query("COMMIT");
        isInTransaction_ = false;
        return result.tag() == "COMMIT";  // of a transaction that failed it is ROLLBACK
    } catch (const PostgresError& error) {
        if (!isOfRow(error.code) || connection_->isLost()) fail(error);
        isInTransaction_ = false;
        guarded([&] { connection_->finish(); });
        return false;
    }
}

void PostgresSession::rollback() {
    beginIsDue_ = false;
    if (!connection_ || !isInTransaction_) return;
    isInTransaction_ = false;
    try {
        if (!connection_->isLost()) {
            connection_->finish();
            connection_->query("ROLLBACK");
        }
    } catch (const PostgresError&) {
        disconnect();
    }
    if (connection_ && connection_->isLost()) disconnect();
}

}  // namespace host
