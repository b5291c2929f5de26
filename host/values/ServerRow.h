// A server row: what toRow makes of a connection row and the adapter returns to the server.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace host {

class RowType;

// Null; boolean; int16, integer and long; float; every other type as the data type library writes it.
using Value = std::variant<std::monostate, bool, std::int64_t, double, std::string>;

inline bool isNull(const Value& value) { return std::holds_alternative<std::monostate>(value); }
inline bool isNumber(const Value& value) {
    return std::holds_alternative<std::int64_t>(value) || std::holds_alternative<double>(value);
}

struct ServerRow {
    const RowType* type;  // null for a row that was given a stream's name only: all its values are texts
    std::string streamName;
    char op;                // i, u, d, p (upsert) or s (safe delete)
    std::int64_t sequence;  // what toRow was given
    std::vector<Value> values;
};

}  // namespace host
