// One connection to a database, as the sinks and the ledger need it.
#pragma once

#include <cstdint>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/database/ColumnTypes.h"
#include "host/database/SinkSettings.h"
#include "host/database/TableShape.h"
#include "host/toolkit/RowType.h"
#include "host/values/Reject.h"
#include "host/values/ServerRow.h"

namespace host {

// A row to be written, and of which message it is.
struct Change {
    const ServerRow* row;
    const std::string* messageId;
};

// A change that the database did not do, by its place among the changes.
struct Refused {
    size_t change;
    Reject reject;
};

// A source's row of kel_ledger.
struct LedgerRow {
    std::int64_t epoch = 0;        // counts the hosts that wrote for the source
    std::vector<std::string> ids;  // of the messages of the batch last written
    std::vector<std::string> old;  // of earlier ones that may come again: seconds since 1970, a blank, the ID
};

// What goes with a batch into the ledger, if the epoch is still the writer's.
struct LedgerUpdate {
    std::int64_t epoch;
    const std::vector<std::string>* ids;
    const std::vector<std::string>* old;  // null: they stay
};

// Who else writes for a source.
struct Holder {
    int process = 0;  // 0: not known
    std::time_t since = 0;
};

// A row of kel_rejected.
struct KeptReject {
    std::int64_t id = 0;
    std::string source;
    std::string messageId;
    std::string at;          // in UTC, as the database writes it; not read by insertReject
    std::string replayedAt;  // the same; "": not sent again yet
    Reject reject;
    MessageCopy message;
};

// Belongs to one thread; stop may come from any other. Operations throw Unavailable, after which the
// transaction is rolled back or must be, or Failure, after which there is nothing left to do. Texts are in
// UTF-8.
class DatabaseSession {
public:
    virtual ~DatabaseSession() = default;

    virtual DatabaseKind kind() const = 0;

    // Connects where there is no connection; whether prepare is due. What fails leaves none half set up.
    virtual bool connect() = 0;
    virtual void disconnect() = 0;

    // The stream's table, kel_ledger or kel_rejected; none: there is no such table.
    virtual std::optional<TableShape> shapeOf(const std::string& table) = 0;

    // The table's name as statements and sentences have it.
    virtual std::string tableName(const std::string& table) const = 0;

    // Runs statements that make tables, in a transaction that waits for others who do the same.
    virtual void create(const std::vector<std::string>& statements) = 0;

    // Comes before the first change: how the stream's table looks. What fails drops the connection.
    virtual void prepare(const TableShape& shape) = 0;

    // Makes this session the source's only writer; else who is. May come again.
    virtual std::optional<Holder> lockSource() = 0;

    // Keeps the source's lock from passing to somebody who takes this host for dead; false: it is lost, as
    // far as is known here. Cheap, and comes often.
    virtual bool signOfLife() = 0;

    virtual void begin() = 0;
    virtual std::optional<LedgerRow> readLedger() = 0;  // and lets nobody else change it before the commit
    virtual void insertLedger() = 0;                    // where there is no row
    virtual bool updateLedger(const LedgerRow& row, std::int64_t epoch) = 0;  // whether it had that epoch

    // Sets replayed_at of the source's reject of that number and message.
    enum class Marked {
        kNow,
        kBefore,
        kUnknown,  // there is none: its table was made anew, or somebody has cleared it
    };
    virtual Marked markReplayed(std::int64_t id, const std::string& messageId) = 0;

    // How write treats a change that fails. Each is exact; with `kInOneGo` nothing may be in the transaction
    // before, because it may be begun anew.
    enum class Care {
        kInOneGo,
        kOneByOne,
        kStrict,  // so, and each must keep at once what is else checked at the commit: finds out who does not
    };

    // Writes the ledger, where there is an update of it, and the changes in their order; false: the epoch is
    // somebody else's, nothing may be committed. With `kInOneGo` of the `p` and `s` of one key the last may
    // stand for all: the table comes out the same, but it sees no row that another of the batch replaces, and
    // so refuses none.
    virtual bool write(const LedgerUpdate* ledger, const std::vector<Change>& changes, Care care,
                       std::vector<Refused>& refused) = 0;

    virtual std::int64_t insertReject(const KeptReject& reject) = 0;  // gives its id

    // Those of the source, the newest last, without bodies and envelopes.
    virtual std::vector<KeptReject> listRejects(bool all, std::int64_t limit) = 0;
    virtual std::optional<KeptReject> loadReject(std::int64_t id) = 0;
    virtual void changeReason(std::int64_t id, const Reject& reject) = 0;

    // False: a constraint that is checked now is broken; nothing is kept. An Unavailable leaves open whether
    // the transaction is.
    virtual bool commit() = 0;
    virtual void rollback() = 0;  // throws nothing; may come without a transaction

    // From now on nothing waits for more than a few seconds; what had to throws Failure.
    virtual void stop() = 0;
};

enum class Access {
    kWrite,
    kLook,  // changes nothing: a database file that is missing counts as an empty one
};

// The session for the settings' URL. Both must outlive it. Throws Failure for a URL of no database of this
// build.
std::unique_ptr<DatabaseSession> makeSession(const SinkSettings& settings, const RowType& type,
                                             Access access = Access::kWrite);

}  // namespace host
