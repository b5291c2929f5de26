#include "host/rows/RowForms.h"
#include "host/rows/TextSink.h"
#include "host/values/ModifiedUtf8.h"
#include "host/values/ValueTyping.h"

namespace host {

namespace {

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

}  // namespace

const RowShape kCsvShape = {"csv", {"op,seq,", "i,", "u,", "d,", "p,", "s,"}, LineFeeds::kInQuotesToo};

std::unique_ptr<RowFormat> makeCsv(const RowType& type, bool heading) {
    return std::make_unique<Csv>(type, heading);
}

std::unique_ptr<RowSink> makeCsvSink(const RowType& type, const std::string& file) {
    return std::make_unique<TextSink>(file, kCsvShape,
                                      [&type](bool atStart) { return makeCsv(type, atStart); });
}

}  // namespace host
