#include "host/database/SqliteSession.h"

#include <sys/stat.h>

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
bool SqliteSession::waitsOn(int millis) {
    lock_.signOfLife();
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

// A connection that is only half set up is dropped.
template <typename Action>
void SqliteSession::setUp(Action action) {
    try {
        guarded(action);
    } catch (...) {
        disconnect();
        throw;
    }
}

bool SqliteSession::connect() {
    if (connection_) return !rows_.insert;
    const bool isThere = std::filesystem::exists(file_);
    if (!isThere && !settings_.create && access_ == Access::kWrite)
        throw Failure("The database file " + file_ + " does not exist; set sink.create, or create it.");
    if (const std::filesystem::path folder = std::filesystem::path(file_).parent_path();
        !folder.empty() && !std::filesystem::is_directory(folder))
        throw Failure("The database file " + file_ + " cannot be opened: there is no folder " +
                      folder.string() + '.');
    const bool isLook = access_ == Access::kLook;
    const int flags = SQLITE_OPEN_READWRITE | (settings_.create && !isLook ? SQLITE_OPEN_CREATE : 0);
    setUp([&] {
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
    struct stat status {};
    const bool isFile = ::stat(file_.c_str(), &status) == 0;
    device_ = status.st_dev;
    inode_ = isFile ? status.st_ino : 0;
    return true;
}

// SQLite goes on writing into a file that was removed or moved away, which nobody would look into.
void SqliteSession::checkPlace() const {
    struct stat status {};
    const bool isThere = ::stat(file_.c_str(), &status) == 0;
    if (inode_ == 0 || (isThere && status.st_dev == device_ && status.st_ino == inode_)) return;
    throw Failure(
        "The database file " + file_ +
        " was removed or replaced while it was in use; put it back, or start again for a new one. The "
        "last batch's messages come again.");
}

void SqliteSession::disconnect() {
    rows_ = {};
    connection_.reset();
}

std::string SqliteSession::tableName(const std::string& table) const { return quotedName(table); }

std::optional<TableShape> SqliteSession::shapeOf(const std::string& table) {
    return guarded([&]() -> std::optional<TableShape> {
        SqliteStatement columns = connection().prepare(
            "SELECT c.name, c.type, c.\"notnull\" <> 0 AND c.dflt_value IS NULL, c.hidden, c.pk, l.strict "
            "FROM "
            "sqlite_schema s, pragma_table_list(s.name) l, pragma_table_xinfo(s.name) c "
            "WHERE s.type = 'table' AND s.name = ?1 COLLATE NOCASE AND l.schema = 'main' ORDER BY c.cid");
        TableShape shape;
        std::vector<std::string> primary;
        columns.bind(1, table);
        while (columns.step()) {
            constexpr int kFirstComputed = 2;
            const bool isComputed = columns.integer(3) >= kFirstComputed;
            DatabaseType type = databaseType(columns.text(1));
            type.isStrict = columns.integer(5) != 0;
            shape.columns.push_back({columns.text(0), std::move(type), columns.integer(2) != 0, isComputed});
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
    // Over what a constraint of the table does by itself: REPLACE would remove other rows without a word.
    const auto orAbort = [](std::string text) { return text.insert(text.find(' '), " OR ABORT"); };
    setUp([&] {
        rows_.insert = connection().prepare(orAbort(texts.insert()));
        if (settings_.mode == SinkMode::kAppend) return;
        rows_.update = connection().prepare(orAbort(texts.update()));
        rows_.remove = connection().prepare(texts.remove());
        rows_.upsert = connection().prepare(orAbort(texts.upsert()));
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
        hasFailed_ = true;
        if (!connection().isInTransaction())
            throw Failure("The table " + quotedName(settings_.table) + " ends transactions by itself (" +
                          error.what() + "); no trigger or ON CONFLICT ROLLBACK may do that.");
        return refusals_.refused(row, errorOf(error));
    }
}

// What a trigger did before it failed may have to be taken back.
std::optional<Reject> SqliteSession::writeAlone(const Change& change, Care care) {
    connection().execute("SAVEPOINT one");
    std::optional<Reject> reject = writeOne(change);
    if (!reject && care == Care::kStrict && connection().hasBrokenReferences()) {
        const DatabaseError error{std::to_string(SQLITE_CONSTRAINT_FOREIGNKEY),
                                  "FOREIGN KEY constraint failed", ""};
        reject = refusals_.refused(*change.row, error);
    }
    if (reject) connection().execute("ROLLBACK TO one");
    connection().execute("RELEASE one");
    return reject;
}

// False: a row failed among others, and with care all of them are to be written anew.
bool SqliteSession::writeAll(const std::vector<Change>& changes, Care care, std::vector<Refused>& refused) {
    for (size_t i = 0; i < changes.size(); ++i) {
        hasFailed_ = false;
        std::optional<Reject> reject =
            care == Care::kInOneGo ? writeOne(changes[i]) : writeAlone(changes[i], care);
        if (hasFailed_ && care == Care::kInOneGo) return false;
        if (reject) refused.push_back({i, std::move(*reject)});
    }
    return true;
}

bool SqliteSession::write(const LedgerUpdate* ledger, const std::vector<Change>& changes, Care care,
                          std::vector<Refused>& refused) {
    refused.clear();
    return guarded([&] {
        if (ledger != nullptr && !writeLedger(*ledger)) return false;
        if (writeAll(changes, care, refused)) return true;
        refused.clear();
        connection().execute("ROLLBACK");
        begin();
        if (ledger != nullptr && !writeLedger(*ledger)) return false;
        return writeAll(changes, Care::kOneByOne, refused);
    });
}

bool SqliteSession::commit() {
    try {
        checkPlace();
        connection().execute("COMMIT");
        checkPlace();  // what went elsewhere meanwhile is not settled
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
