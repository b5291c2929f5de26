// A stream's rows as statements of PostgreSQL: one for each row, or one for many.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/database/DatabaseSession.h"
#include "host/database/Postgres.h"
#include "host/database/Refusals.h"

namespace host {

class PostgresRows {
public:
    // `table`: as statements name it; the type must outlive it.
    PostgresRows(SinkMode mode, const RowType& type, const std::string& table, const TableShape& shape);

    // Makes the statements known to a new connection. Throws PostgresError.
    void prepare(PostgresConnection& connection) const;

    // Why the row is not even sent.
    std::optional<Reject> unfit(const ServerRow& row) const;

    // Sends one row's statement.
    void send(PostgresConnection& connection, const Change& change);

    // Whether the changes can be brought together: they are appended, or each sets or removes its key's row
    // whatever was there, so that the last one of a key is all that matters.
    bool canBring(const std::vector<Change>& changes) const;

    // Sends them so, and gives for each statement how many rows it must write; none: any number.
    std::vector<std::optional<size_t>> sendTogether(PostgresConnection& connection,
                                                    const std::vector<const Change*>& changes);

    const Refusals& refusals() const { return refusals_; }

private:
    struct Form {
        ValueForm value;
        PostgresType type;  // of the parameter
        std::string sent;   // the same by its name
        std::string cast;   // to what the column needs; "": nothing
        bool isInterval = false;
    };

    static Form formOf(const Column& column, const DatabaseType& there);
    template <typename Out>
    void addValue(Out& out, size_t column, const Value& value);
    std::string together(const std::vector<size_t>& columns) const;
    void fill(std::vector<PostgresArray>& arrays, const std::vector<size_t>& columns,
              std::span<const Change* const> changes);
    std::vector<const Change*> lastOfKeys(const std::vector<const Change*>& changes);

    const SinkMode mode_;
    const RowType& type_;
    const Refusals refusals_;
    std::vector<Form> forms_;  // of the stream's columns, then of those that an appended row has besides
    std::vector<std::string> names_;  // of the stream's columns
    std::vector<size_t> keys_;
    std::vector<std::pair<std::string, std::string>> statements_;  // by their names
    std::string text_;                                             // of the value in hand
    PostgresParameters parameters_;
    std::vector<PostgresArray> arrays_;
    std::vector<PostgresArray> keyArrays_;
};

}  // namespace host
