// Rows as text on standard output.
#pragma once

#include <memory>
#include <string>

#include "host/toolkit/RowType.h"
#include "host/values/ServerRow.h"

namespace host {

class RowFormat {
public:
    virtual ~RowFormat() = default;

    // Appends the row's line, or lines when headings belong before it, in UTF-8.
    virtual void append(const ServerRow& row, std::string& out) = 0;
};

// One object a line: stream, op, seq and the row's columns in their order.
std::unique_ptr<RowFormat> makeJsonLines(const RowType& type);

// Comma-separated values as spreadsheets read them; null is nothing, an empty text "". `heading`: a first
// line with the names.
std::unique_ptr<RowFormat> makeCsv(const RowType& type, bool heading);

// Aligned columns for people, with the heading again after every screenful.
std::unique_ptr<RowFormat> makeTable(const RowType& type);

}  // namespace host
