// Rows as text.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/process/RowFile.h"
#include "host/toolkit/RowType.h"
#include "host/values/ServerRow.h"

namespace host {

class RowFormat {
public:
    virtual ~RowFormat() = default;

    // Appends the row's line, or lines when headings belong before it, in UTF-8.
    virtual void append(const ServerRow& row, std::string& out) = 0;
};

// What stands above the values of a row in lines and columns: op, seq and the columns' names, in UTF-8.
std::vector<std::string> headings(const RowType& type);

// One object a line: stream, op, seq and the row's columns in their order.
std::unique_ptr<RowFormat> makeJsonLines(const RowType& type);
extern const RowShape kJsonShape;

// Comma-separated values as spreadsheets read them; null is nothing, an empty text "". `heading`: a first
// line with the names.
std::unique_ptr<RowFormat> makeCsv(const RowType& type, bool heading);
extern const RowShape kCsvShape;

// Aligned columns for people, with the heading again after every screenful.
std::unique_ptr<RowFormat> makeTable(const RowType& type);
extern const RowShape kTableShape;

}  // namespace host
