// Aligned columns for people.
#pragma once

#include <string>
#include <vector>

namespace host {

// Texts are UTF-8; what in them would break the line or steer the terminal is shown as escapes.
class TextTable {
public:
    enum class Side { kLeft, kRight };
    struct Cell {
        std::string text;
        Side side = Side::kLeft;
    };

    // As many columns, and how wide each is at least.
    explicit TextTable(std::vector<size_t> leastWidths) : widths_(std::move(leastWidths)) {}

    // Widens the columns for what will be appended. A line has no more cells than there are columns.
    void fit(const std::vector<Cell>& cells);

    // Appends a line; a cell wider than its column so far widens that from here on.
    void appendLine(const std::vector<Cell>& cells, std::string& out);
    void appendRule(std::string& out);

private:
    std::vector<size_t> widths_;
};

}  // namespace host
