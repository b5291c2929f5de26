// A stream's name and columns, and a set of parameters. The handles of the C interface are addresses of
// these.
//
// Texts are in the JVM's modified UTF-8, because the adapter compares and passes them on as they are
// (host/values/ModifiedUtf8.h converts).
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace host {

struct Column {
    std::string name;
    std::uint32_t type;  // server type code
    bool key;
};

// A stream's name and columns.
class RowType {
public:
    RowType(std::string name, std::vector<Column> all);
    RowType(const RowType&) = delete;
    RowType& operator=(const RowType&) = delete;

    const Column* at(int index) const;               // null when out of range
    int indexOf(std::string_view columnName) const;  // -1: there is none

    const std::string streamName;
    const std::vector<Column> columns;

private:
    std::unordered_map<std::string_view, int> indexes_;  // views into `columns`
};

// Parameter name -> value; integers and flags as their text.
using Parameters = std::map<std::string, std::string, std::less<>>;

}  // namespace host
