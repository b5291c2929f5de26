// A file of rows that a further run continues.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace host {

// Whether each line feed ends a row, or one within quotes is part of it.
enum class LineFeeds { kEndRows, kInQuotesToo };

// What a file of rows is known by.
struct RowShape {
    const char* form;                                    // its name
    std::initializer_list<std::string_view> beginnings;  // of the lines that a run writes
    LineFeeds lineFeeds = LineFeeds::kEndRows;
};

// Cuts off what follows the file's last whole row, and says so: a run that was killed, or found the disk
// full, leaves such a piece, to which the next row would be glued. `descriptor` can write. Throws Failure,
// also where the piece is no row's begin and so of somebody else.
void cutTornRow(int descriptor, const std::string& name, const RowShape& shape);

}  // namespace host
