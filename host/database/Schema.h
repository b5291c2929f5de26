// The tables that a sink needs: the stream's, the ledger and the rejects.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/database/DatabaseSession.h"
#include "host/database/Names.h"

namespace host {

class Schema {
public:
    // Both must outlive it.
    Schema(const SinkSettings& settings, const RowType& type);

    // A sentence for everything because of which rows could not be written as they are, and for what is
    // missing and would not be created. Changes nothing.
    std::vector<std::string> problems(DatabaseSession& session) const;

    // Makes the tables that are missing, where that is wanted, and gives what the stream's looks like. What
    // is there is never altered. Throws Failure with the first sentence, behind having said the others.
    TableShape ensure(DatabaseSession& session) const;

private:
    struct Expected {
        std::string name;
        std::uint32_t type;   // of the server
        std::string created;  // the column's type in a table that is made
        bool isKey;
    };

    std::vector<Expected> expected(DatabaseKind kind) const;
    std::string createStatement(const DatabaseSession& session, const std::string& table) const;
    void checkColumns(const DatabaseSession& session, const TableShape& shape,
                      std::vector<std::string>& found) const;
    std::string missing(const DatabaseSession& session, const Expected& column) const;
    std::string misfit(DatabaseKind kind, const Expected& column, const TableColumn& there) const;
    void checkKey(const DatabaseSession& session, const TableShape& shape,
                  std::vector<std::string>& found) const;
    void checkOwnTable(const DatabaseSession& session, const std::string& table, const TableShape& shape,
                       std::vector<std::string>& found) const;
    std::vector<std::string> check(DatabaseSession& session, std::vector<std::string>& missing) const;

    const SinkSettings& settings_;
    const RowType& type_;
};

// What a start would find wrong in the database, a sentence each. Changes nothing there.
std::vector<std::string> databaseProblems(const SinkSettings& settings, const RowType& type);

}  // namespace host
