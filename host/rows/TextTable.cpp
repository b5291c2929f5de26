#include "host/rows/TextTable.h"

#include <algorithm>

#include "host/process/SafeText.h"
#include "host/values/Text.h"

namespace host {

namespace {

constexpr char kGap[] = "  ";

}  // namespace

void TextTable::fit(const std::vector<Cell>& cells) {
    for (size_t i = 0; i < cells.size(); ++i)
        widths_[i] = std::max(widths_[i], cellWidth(oneLine(cells[i].text)));
}

void TextTable::appendLine(const std::vector<Cell>& cells, std::string& out) {
    std::string line;
    for (size_t i = 0; i < cells.size(); ++i) {
        const std::string text = oneLine(cells[i].text);
        const size_t width = cellWidth(text);
        widths_[i] = std::max(widths_[i], width);
        const std::string padding(widths_[i] - width, ' ');
        if (i > 0) line += kGap;
        line += cells[i].side == Side::kRight ? padding + text : text + padding;
    }
    out.append(line, 0, line.find_last_not_of(' ') + 1) += '\n';
}

void TextTable::appendRule(std::string& out) {
    std::vector<Cell> rules;
    for (const size_t width : widths_) rules.push_back({std::string(width, '-')});
    appendLine(rules, out);
}

}  // namespace host
