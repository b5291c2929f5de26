// Rows as comma-separated values and as an aligned table.
#include <algorithm>

#include "host/process/SafeText.h"
#include "host/rows/RowFormat.h"
#include "host/values/ModifiedUtf8.h"
#include "host/values/Text.h"
#include "host/values/ValueTyping.h"

namespace host {

namespace {

std::vector<std::string> headings(const RowType& type) {
    std::vector<std::string> names = {"op", "seq"};
    for (const Column& column : type.columns) names.push_back(toUtf8(column.name));
    return names;
}

bool isNull(const Value& value) { return std::holds_alternative<std::monostate>(value); }
bool isNumber(const Value& value) { return !isNull(value) && !std::holds_alternative<std::string>(value); }

class Csv : public RowFormat {
public:
    Csv(const RowType& type, bool heading) : names_(headings(type)), headingIsDue_(heading) {}

    void append(const ServerRow& row, std::string& out) override {
        if (headingIsDue_) appendHeading(out);
        out += row.op;
        (out += ',') += std::to_string(row.sequence);
        for (const Value& value : row.values) {
            out += ',';
            if (!isNull(value)) appendField(toUtf8(writeValue(value)), isNumber(value), out);
        }
        out += '\n';
    }

private:
    void appendHeading(std::string& out) {
        headingIsDue_ = false;
        for (size_t i = 0; i < names_.size(); ++i) {
            if (i > 0) out += ',';
            appendField(names_[i], true, out);
        }
        out += '\n';
    }

    // Quotes where the text would not read back as this one field. An empty text keeps them, null has none.
    static void appendField(const std::string& text, bool neverEmpty, std::string& out) {
        if (text.find_first_of(",\"\r\n") == std::string::npos && (neverEmpty || !text.empty())) {
            out += text;
            return;
        }
        out += '"';
        for (const char c : text) {
            if (c == '"') out += '"';
            out += c;
        }
        out += '"';
    }

    std::vector<std::string> names_;
    bool headingIsDue_;
};

std::string printable(std::string_view text) {
    return withoutSteering(text, [](char32_t) { return "?"; });
}

class Table : public RowFormat {
public:
    explicit Table(const RowType& type) : names_(headings(type)) {
        for (const std::string& name : names_) widths_.push_back(std::max(cellWidth(name), kLeastWidth));
        widths_[0] = cellWidth(names_[0]);
    }

    // A text wider than its column so far widens it from here on.
    void append(const ServerRow& row, std::string& out) override {
        if (rowsSinceHeading_ == 0) appendHeading(out);
        rowsSinceHeading_ = (rowsSinceHeading_ + 1) % kRowsBetweenHeadings;
        std::string line;
        appendCell(0, std::string(1, row.op), false, line);
        appendCell(1, std::to_string(row.sequence), true, line);
        for (size_t i = 0; i < row.values.size(); ++i) {
            const Value& value = row.values[i];
            appendCell(i + 2, isNull(value) ? "-" : printable(toUtf8(writeValue(value))), isNumber(value),
                       line);
        }
        appendLine(line, out);
    }

private:
    static constexpr size_t kLeastWidth = 8;
    static constexpr int kRowsBetweenHeadings = 40;

    void appendHeading(std::string& out) {
        std::string line;
        std::string rule;
        for (size_t i = 0; i < names_.size(); ++i) appendCell(i, printable(names_[i]), false, line);
        for (size_t i = 0; i < names_.size(); ++i) appendCell(i, std::string(widths_[i], '-'), false, rule);
        appendLine(line, out);
        appendLine(rule, out);
    }

    void appendCell(size_t column, const std::string& text, bool toTheRight, std::string& line) {
        widths_[column] = std::max(widths_[column], cellWidth(text));
        const std::string padding(widths_[column] - cellWidth(text), ' ');
        if (column > 0) line += "  ";
        line += toTheRight ? padding + text : text + padding;
    }

    static void appendLine(const std::string& line, std::string& out) {
        out += line.substr(0, line.find_last_not_of(' ') + 1);
        out += '\n';
    }

    std::vector<std::string> names_;
    std::vector<size_t> widths_;
    int rowsSinceHeading_ = 0;
};

}  // namespace

std::unique_ptr<RowFormat> makeCsv(const RowType& type, bool heading) {
    return std::make_unique<Csv>(type, heading);
}

std::unique_ptr<RowFormat> makeTable(const RowType& type) { return std::make_unique<Table>(type); }

}  // namespace host
