#include <algorithm>

#include "host/rows/RowForms.h"
#include "host/rows/TextSink.h"
#include "host/rows/TextTable.h"
#include "host/values/ModifiedUtf8.h"
#include "host/values/Text.h"
#include "host/values/ValueTyping.h"

namespace host {

namespace {

using enum TextTable::Side;

class Table : public RowFormat {
public:
    explicit Table(const RowType& type) : table_(leastWidths(headings(type))) {
        for (std::string& name : headings(type)) names_.push_back({std::move(name)});
    }

    void append(const ServerRow& row, std::string& out) override {
        if (rowsSinceHeading_ == 0) {
            table_.appendLine(names_, out);
            table_.appendRule(out);
        }
        rowsSinceHeading_ = (rowsSinceHeading_ + 1) % kRowsBetweenHeadings;
        std::vector<TextTable::Cell> cells = {{std::string(1, row.op)},
                                              {std::to_string(row.sequence), kRight}};
        for (const Value& value : row.values)
            cells.push_back(
                {isNull(value) ? "-" : toUtf8(writeValue(value)), isNumber(value) ? kRight : kLeft});
        table_.appendLine(cells, out);
    }

private:
    static constexpr int kRowsBetweenHeadings = 40;

    static std::vector<size_t> leastWidths(const std::vector<std::string>& names) {
        constexpr size_t kLeastWidth = 8;
        std::vector<size_t> widths(names.size(), kLeastWidth);
        widths[0] = cellWidth(names[0]);
        return widths;
    }

    std::vector<TextTable::Cell> names_;
    TextTable table_;
    int rowsSinceHeading_ = 0;
};

}  // namespace

const RowShape kTableShape = {"table", {"op  seq ", "--  --------", "i  ", "u  ", "d  ", "p  ", "s  "}};

std::unique_ptr<RowFormat> makeTable(const RowType& type) { return std::make_unique<Table>(type); }

std::unique_ptr<RowSink> makeTableSink(const RowType& type, const std::string& file) {
    return std::make_unique<TextSink>(file, kTableShape, [&type](bool) { return makeTable(type); });
}

}  // namespace host
