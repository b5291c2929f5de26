// A table as the database has it.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace host {

// A column's type by the name that the database has for it, without the numbers behind it: numeric, {10, 1}.
struct DatabaseType {
    std::string name;
    std::vector<int> numbers;
    bool isStrict = false;  // SQLite's: the column takes no values of another type
};

// As it is written: numeric(10,1).
std::string textOf(const DatabaseType& type);

// Takes numeric(10,1) apart; words behind the numbers belong to the name. Upper and lower case stay.
DatabaseType databaseType(const std::string& text);

struct TableColumn {
    std::string name;
    DatabaseType type;
    bool mustBeGiven = false;  // not null, and nothing stands in where a row has no value for it
    bool isComputed = false;   // by the database, always
};

struct TableShape {
    std::vector<TableColumn> columns;
    // The columns of each unique index that holds for every row at once.
    std::vector<std::vector<std::string>> uniqueIndexes;
};

}  // namespace host
