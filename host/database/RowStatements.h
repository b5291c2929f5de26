// The statements that write a stream's rows, where both databases have the same.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/database/SinkSettings.h"
#include "host/toolkit/RowType.h"

namespace host {

// What stands for a column's value: ?3, or $3 with a cast. Columns count from 0, those that an appended row
// has besides following the stream's.
using Placeholder = std::function<std::string(size_t column)>;

class RowStatements {
public:
    // `table`: as statements name it.
    RowStatements(SinkMode mode, const RowType& type, std::string table, Placeholder placeholder);

    std::string insert() const;  // of a row whose key is there already, where keys count: does nothing
    std::string update() const;
    std::string remove() const;
    std::string upsert() const;

    // The columns that are written, quoted, and of them those that are keys.
    std::string columns() const;
    std::string keys() const;
    std::string onConflict() const;  // behind an insert: puts the new row in the old one's place

    std::vector<size_t> keyColumns() const;

private:
    std::string whereKey() const;
    std::string pairs(const std::function<std::string(size_t)>& value) const;

    const SinkMode mode_;
    const std::string table_;
    const Placeholder placeholder_;
    std::vector<std::string> names_;  // quoted
    std::vector<bool> isKey_;
};

}  // namespace host
