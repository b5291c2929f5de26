// SQLite's C interface with owners and errors.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace host {

// A call of SQLite that failed, with its extended code.
class SqliteError : public std::runtime_error {
public:
    SqliteError(int extendedCode, const std::string& text) : std::runtime_error(text), code(extendedCode) {}
    const int code;
};

// A prepared statement. Texts and bytes that are bound must stay until the step is done. Parameters count
// from 1, columns from 0.
class SqliteStatement {
public:
    SqliteStatement(sqlite3* connection, const std::string& text);

    SqliteStatement& bindNull(int parameter);
    SqliteStatement& bind(int parameter, std::int64_t value);
    SqliteStatement& bind(int parameter, double value);
    SqliteStatement& bind(int parameter, std::string_view text);
    SqliteStatement& bindBytes(int parameter, std::string_view bytes);

    // Whether there is a row; after the last the statement may be bound and run again. Throws SqliteError.
    bool step();
    void run();  // one that has no rows, or whose rows are of no interest

    std::int64_t integer(int column) const;
    std::string text(int column) const;  // bytes too; "" for null
    bool isNull(int column) const;

private:
    void check(int code) const;
    void fail(int code);

    struct Finalize {
        void operator()(sqlite3_stmt* statement) const;
    };
    sqlite3* connection_;
    std::unique_ptr<sqlite3_stmt, Finalize> statement_;
};

// An open database file. What waits for another writer asks `waitsOn` again and again, with the milliseconds
// that have passed.
class SqliteConnection {
public:
    SqliteConnection(const std::string& file, int flags, std::function<bool(int)> waitsOn);

    void execute(const std::string& statements);
    SqliteStatement prepare(const std::string& text) const { return {connection_.get(), text}; }

    std::int64_t changes() const;  // of the last statement
    std::int64_t lastRowId() const;
    bool isInTransaction() const;
    bool hasBrokenReferences() const;  // that the commit would refuse

private:
    static int onBusy(void* self, int calls);

    struct Close {
        void operator()(sqlite3* connection) const;
    };
    std::unique_ptr<sqlite3, Close> connection_;
    std::function<bool(int)> waitsOn_;
};

}  // namespace host
