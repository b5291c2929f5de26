#include "host/database/Schema.h"

#include <algorithm>
#include <set>

#include "datatypes/TypeCodes.h"
#include "host/database/Unavailable.h"
#include "host/process/Console.h"
#include "host/process/Failure.h"
#include "host/values/ModifiedUtf8.h"
#include "host/values/Text.h"
#include "host/values/ValueTyping.h"

namespace host {

namespace {

struct OwnColumn {
    const char* name;
    const char* postgres;
    const char* sqlite;
};
struct OwnTable {
    const char* name;
    std::vector<OwnColumn> columns;
};

// The tables that belong to no stream.
const OwnTable kOwnTables[] = {
    {kLedgerTable,
     {{"source", "text primary key", "TEXT PRIMARY KEY NOT NULL"},
      {"epoch", "bigint not null", "INTEGER NOT NULL"},
      {"ids", "text[] not null", "TEXT NOT NULL"},
      {"old", "text[] not null", "TEXT NOT NULL"},
      {"at", "timestamptz not null", "TEXT NOT NULL"}}},
    {kRejectedTable,
     {{"id", "bigint generated always as identity primary key", "INTEGER PRIMARY KEY AUTOINCREMENT"},
      {"source", "text not null", "TEXT NOT NULL"},
      {"message_id", "text not null", "TEXT NOT NULL"},
      {"at", "timestamptz not null", "TEXT NOT NULL"},
      {"stage", "text not null", "TEXT NOT NULL"},
      {"key", "text not null", "TEXT NOT NULL"},
      {"error", "text not null", "TEXT NOT NULL"},
      {"column_name", "text not null", "TEXT NOT NULL"},
      {"format", "text not null", "TEXT NOT NULL"},
      {"body", "bytea", "BLOB"},
      {"envelope", "text not null", "TEXT NOT NULL"},
      {"replayed_at", "timestamptz", "TEXT"}}},
};

const OwnTable* ownTable(const std::string& name) {
    const auto* found = std::find_if(std::begin(kOwnTables), std::end(kOwnTables),
                                     [&name](const OwnTable& one) { return name == one.name; });
    return found != std::end(kOwnTables) ? found : nullptr;
}

const char* endOfCreation(DatabaseKind kind) { return kind == DatabaseKind::kSqlite ? ") STRICT" : ")"; }

const TableColumn* findColumn(DatabaseKind kind, const TableShape& shape, const std::string& name) {
    const auto found = std::find_if(shape.columns.begin(), shape.columns.end(), [&](const TableColumn& one) {
        return knownName(kind, one.name) == knownName(kind, name);
    });
    return found != shape.columns.end() ? &*found : nullptr;
}

}  // namespace

Schema::Schema(const SinkSettings& settings, const RowType& type) : settings_(settings), type_(type) {}

std::vector<Schema::Expected> Schema::expected(DatabaseKind kind) const {
    std::vector<Expected> columns;
    for (const Column& column : type_.columns)
        columns.push_back({toUtf8(column.name), column.type, createdType(kind, column.type), column.key});
    if (settings_.mode == SinkMode::kApply) return columns;
    const bool isPostgres = kind == DatabaseKind::kPostgres;
    columns.push_back({kOpColumn, DataTypes::kString, isPostgres ? "varchar(1)" : "TEXT", false});
    columns.push_back({kSeqColumn, DataTypes::kLong, createdType(kind, DataTypes::kLong), false});
    columns.push_back({kMessageIdColumn, DataTypes::kString, createdType(kind, DataTypes::kString), false});
    columns.push_back({kAtColumn, DataTypes::kBigdatetime, isPostgres ? "timestamptz" : "TEXT", false});
    return columns;
}

std::string Schema::createStatement(const DatabaseSession& session, const std::string& table) const {
    const DatabaseKind kind = session.kind();
    const bool isPostgres = kind == DatabaseKind::kPostgres;
    std::string columns, keys;
    if (const OwnTable* own = ownTable(table)) {
        for (const OwnColumn& column : own->columns)
            addToList(columns,
                      quotedName(column.name) + ' ' + (isPostgres ? column.postgres : column.sqlite));
    } else {
        for (const Expected& column : expected(kind)) {
            const bool isKey = column.isKey && settings_.mode == SinkMode::kApply;
            addToList(columns, quotedName(column.name) + ' ' + column.created + (isKey ? " NOT NULL" : ""));
            if (isKey) addToList(keys, quotedName(column.name));
        }
        if (!keys.empty()) columns += ", PRIMARY KEY (" + keys + ')';
    }
    return "CREATE TABLE " + session.tableName(table) + " (" + columns + endOfCreation(kind);
}

void Schema::checkColumns(const DatabaseSession& session, const TableShape& shape,
                          std::vector<std::string>& found) const {
    const DatabaseKind kind = session.kind();
    const std::string table = quotedName(settings_.table);
    std::set<std::string> written;
    for (const Expected& column : expected(kind)) {
        written.insert(knownName(kind, column.name));
        const TableColumn* there = findColumn(kind, shape, column.name);
        std::string sentence = there != nullptr ? misfit(kind, column, *there) : missing(session, column);
        if (!sentence.empty()) found.push_back(std::move(sentence));
    }
    for (const TableColumn& column : shape.columns) {
        if (!column.mustBeGiven || column.isComputed || written.count(knownName(kind, column.name)) > 0)
            continue;
        found.push_back(
            "The column " + quotedName(column.name) + " of " + table +
            " is not in the stream, must not be null and has no default: no row could be written.");
    }
}

std::string Schema::missing(const DatabaseSession& session, const Expected& column) const {
    std::string sentence = "The table ";
    sentence.append(quotedName(settings_.table)).append(" lacks the column ").append(quotedName(column.name));
    sentence.append(" for ").append(typeName(column.type)).append("; add it: ALTER TABLE ");
    sentence.append(session.tableName(settings_.table))
        .append(" ADD COLUMN ")
        .append(quotedName(column.name));
    return sentence.append(" ").append(column.created).append(".");
}

// "": its values come back as they went in.
std::string Schema::misfit(DatabaseKind kind, const Expected& column, const TableColumn& there) const {
    const Fit fit = fitOf(kind, column.type, there.type);
    std::string sentence = "The column ";
    sentence.append(quotedName(column.name))
        .append(" of ")
        .append(quotedName(settings_.table))
        .append(" is ");
    if (there.isComputed) return sentence.append("computed by the database and cannot be written.");
    if (fit == Fit::kExact) return "";
    sentence.append(textOf(there.type));
    sentence.append(fit == Fit::kRounds ? ", which would round " : ", which does not take ");
    return sentence.append(typeName(column.type)).append("; it needs ").append(column.created).append(".");
}

void Schema::checkKey(const DatabaseSession& session, const TableShape& shape,
                      std::vector<std::string>& found) const {
    std::set<std::string> keys;
    std::string list;
    for (const Column& column : type_.columns) {
        if (!column.key) continue;
        keys.insert(knownName(session.kind(), toUtf8(column.name)));
        addToList(list, quotedName(toUtf8(column.name)));
    }
    for (const std::vector<std::string>& index : shape.uniqueIndexes) {
        std::set<std::string> columns;
        for (const std::string& column : index) columns.insert(knownName(session.kind(), column));
        if (columns == keys) return;
    }
    found.push_back("mode = \"apply\" needs a unique index on exactly (" + list + "); the table " +
                    quotedName(settings_.table) + " has none.");
}

void Schema::checkOwnTable(const DatabaseSession& session, const std::string& table, const TableShape& shape,
                           std::vector<std::string>& found) const {
    for (const OwnColumn& column : ownTable(table)->columns) {
        if (findColumn(session.kind(), shape, column.name) == nullptr)
            found.push_back("The table " + session.tableName(table) +
                            " is not the sink's own: it lacks the column " + quotedName(column.name) +
                            "; rename it, or choose another place for the sink.");
    }
}

std::vector<std::string> Schema::check(DatabaseSession& session, std::vector<std::string>& missing) const {
    std::vector<std::string> found;
    const bool isApplied = settings_.mode == SinkMode::kApply;
    const bool hasKey =
        std::any_of(type_.columns.begin(), type_.columns.end(), [](const Column& c) { return c.key; });
    if (isApplied && !hasKey) found.push_back("mode = \"apply\" needs key columns; the stream has none.");
    for (std::string& problem : nameProblems(session.kind(), settings_, type_.columns))
        found.push_back(std::move(problem));
    if (!found.empty()) return found;
    for (const std::string& table :
         {settings_.table, std::string(kLedgerTable), std::string(kRejectedTable)}) {
        const std::optional<TableShape> shape = session.shapeOf(table);
        if (!shape) {
            missing.push_back(createStatement(session, table));
            if (!settings_.create)
                found.push_back("The table " + session.tableName(table) +
                                " does not exist; set sink.create, or create it: " + missing.back() + '.');
        } else if (ownTable(table) != nullptr) {
            checkOwnTable(session, table, *shape, found);
        } else {
            checkColumns(session, *shape, found);
            if (isApplied) checkKey(session, *shape, found);
        }
    }
    return found;
}

std::vector<std::string> Schema::problems(DatabaseSession& session) const {
    std::vector<std::string> missing;
    return check(session, missing);
}

TableShape Schema::ensure(DatabaseSession& session) const {
    // Another host may make the tables meanwhile, so the second look is at what came out.
    for (const bool isFirst : {true, false}) {
        std::vector<std::string> missing;
        std::vector<std::string> found = check(session, missing);
        if (!found.empty()) {
            for (size_t i = 1; i < found.size(); ++i) say(found[i]);
            throw Failure(found.front());
        }
        if (missing.empty()) break;
        if (isFirst) session.create(missing);
    }
    std::optional<TableShape> shape = session.shapeOf(settings_.table);
    if (!shape)
        throw Failure("The table " + session.tableName(settings_.table) + " was dropped by somebody else.");
    return std::move(*shape);
}

std::vector<std::string> databaseProblems(const SinkSettings& settings, const RowType& type) {
    try {
        const std::unique_ptr<DatabaseSession> session = makeSession(settings, type, Access::kLook);
        session->connect();
        return Schema(settings, type).problems(*session);
    } catch (const Failure& failure) {
        return {failure.what()};
    } catch (const Unavailable& reason) {
        return {std::string("The database does not answer (") + reason.what() + ")."};
    }
}

}  // namespace host
