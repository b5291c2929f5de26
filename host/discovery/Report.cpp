#include "host/discovery/Report.h"

#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>
#include <toml++/toml.h>
#include <algorithm>
#include <sstream>

#include "host/process/SafeText.h"
#include "host/rows/TextTable.h"
#include "host/values/ModifiedUtf8.h"
#include "host/values/Text.h"

namespace host {

namespace {

std::string line(const std::string& modified) { return oneLine(toUtf8(modified)); }

// An explanation for people, a sentence a line.
std::vector<std::string> sentences(const Explanation& explanation) {
    std::string fits;
    for (const auto& [type, count] : explanation.fits) addToList(fits, type + ' ' + std::to_string(count));
    std::vector<std::string> lines = {
        "decided by " + line(quoted(explanation.value)) + " (sample " + std::to_string(explanation.sample) +
            "): " + explanation.rule,
        "of " + std::to_string(explanation.values) + (explanation.values == 1 ? " value" : " values") +
            " fit: " + fits,
    };
    for (const std::string& warning : explanation.warnings) lines.push_back("warning: " + line(warning));
    return lines;
}

class Table {
public:
    explicit Table(const Discovery& discovery)
        : types_(discovery.types), table_(std::vector<size_t>(discovery.names.size())) {}

    void fit(const std::vector<std::string>& row) { table_.fit(cells(row, false)); }

    void append(const std::vector<std::string>& row, bool isHeading, std::string& out) {
        table_.appendLine(cells(row, isHeading), out);
    }

    void appendRule(std::string& out) { table_.appendRule(out); }

private:
    std::vector<TextTable::Cell> cells(const std::vector<std::string>& row, bool isHeading) const {
        std::vector<TextTable::Cell> cells;
        for (size_t i = 0; i < row.size(); ++i)
            cells.push_back({toUtf8(row[i]),
                             isNumber(i) && !isHeading ? TextTable::Side::kRight : TextTable::Side::kLeft});
        return cells;
    }

    bool isNumber(size_t column) const {
        return types_[column] == "integer" || types_[column] == "long" || types_[column] == "float";
    }

    const std::vector<std::string>& types_;
    TextTable table_;
};

class Json {
public:
    explicit Json(const Findings& findings) : findings_(findings) { writer_.SetIndent(' ', 2); }

    std::string write() {
        const Discovery& discovery = findings_.discovery;
        writer_.StartObject();
        text("stream", findings_.proposal.streamName);
        writer_.Key("columns");
        writer_.StartArray();
        for (size_t i = 0; i < discovery.names.size(); ++i) column(i);
        writer_.EndArray();
        writer_.Key("samples");
        writer_.StartArray();
        for (size_t i = 0; i < std::min(findings_.samples, discovery.samples.size()); ++i)
            texts(discovery.samples[i]);
        writer_.EndArray();
        if (!findings_.remarks.empty()) {
            writer_.Key("remarks");
            texts(findings_.remarks);
        }
        writer_.EndObject();
        return std::string(buffer_.GetString(), buffer_.GetSize()) + '\n';
    }

private:
    void string(const std::string& modified) {
        const std::string utf8 = toUtf8(modified);
        writer_.String(utf8.data(), static_cast<rapidjson::SizeType>(utf8.size()));
    }
    void text(const char* key, const std::string& modified) {
        writer_.Key(key);
        string(modified);
    }
    void number(const char* key, size_t value) {
        writer_.Key(key);
        writer_.Uint64(value);
    }
    // In one line.
    void texts(const std::vector<std::string>& all) {
        writer_.StartArray();
        writer_.SetFormatOptions(rapidjson::kFormatSingleLineArray);
        for (const std::string& one : all) string(one);
        writer_.EndArray();
        writer_.SetFormatOptions(rapidjson::kFormatDefault);
    }

    void column(size_t index) {
        writer_.StartObject();
        text("name", findings_.discovery.names[index]);
        text("type", findings_.discovery.types[index]);
        if (!findings_.explanations.empty()) explanation(findings_.explanations[index]);
        writer_.EndObject();
    }

    void explanation(const Explanation& explanation) {
        writer_.Key("explain");
        writer_.StartObject();
        number("sample", explanation.sample);
        text("value", explanation.value);
        text("rule", explanation.rule);
        number("values", explanation.values);
        writer_.Key("fits");
        writer_.StartObject();
        for (const auto& [type, count] : explanation.fits) number(type.c_str(), count);
        writer_.EndObject();
        writer_.Key("warnings");
        texts(explanation.warnings);
        writer_.EndObject();
    }

    const Findings& findings_;
    rapidjson::StringBuffer buffer_;
    rapidjson::PrettyWriter<rapidjson::StringBuffer> writer_{buffer_};
};

std::string tomlText(const std::string& modified) {
    std::ostringstream out;
    out << toml::toml_formatter(toml::value<std::string>(toUtf8(modified)), toml::format_flags::none);
    return out.str();
}

const Explanation* explanationOf(const std::string& column, const Findings& findings) {
    const std::vector<std::string>& names = findings.discovery.names;
    const auto index = static_cast<size_t>(std::find(names.begin(), names.end(), column) - names.begin());
    return index < findings.explanations.size() ? &findings.explanations[index] : nullptr;
}

// Columns, types and samples as the entry points answered them.
std::string asTable(const Findings& findings) {
    const Discovery& discovery = findings.discovery;
    const size_t shown = std::min(findings.samples, discovery.samples.size());
    Table table(discovery);
    table.fit(discovery.names);
    table.fit(discovery.types);
    for (size_t i = 0; i < shown; ++i) table.fit(discovery.samples[i]);
    std::string out;
    table.append(discovery.names, true, out);
    table.append(discovery.types, true, out);
    if (shown > 0) table.appendRule(out);
    for (size_t i = 0; i < shown; ++i) table.append(discovery.samples[i], false, out);
    for (size_t i = 0; i < findings.explanations.size(); ++i) {
        out += '\n' + line(discovery.names[i]) + ": " + discovery.types[i] + '\n';
        for (const std::string& sentence : sentences(findings.explanations[i])) out += "  " + sentence + '\n';
    }
    for (const std::string& remark : findings.remarks) out += '\n' + remark + '\n';
    return out;
}

std::string asJson(const Findings& findings) { return Json(findings).write(); }

// The section [stream] to paste into a configuration, and what [connection] needs besides.
std::string asToml(const Findings& findings) {
    const Proposal& proposal = findings.proposal;
    std::string out;
    for (const std::string& note : proposal.notes) out += "# " + line(note) + '\n';
    for (const std::string& remark : findings.remarks) out += "# " + remark + '\n';
    out += "[stream]\nname = " + tomlText(proposal.streamName) + "\ncolumns = [\n";
    for (const ProposedColumn& column : proposal.columns) {
        if (const Explanation* explanation = explanationOf(column.name, findings)) {
            for (const std::string& sentence : sentences(*explanation)) out += "    # " + sentence + '\n';
        }
        out += "    { name = " + tomlText(column.name) + ", type = " + tomlText(column.type) +
               (column.key ? ", key = true" : "") + " },";
        if (!column.reason.empty()) out += "  # " + line(column.reason);
        out += '\n';
    }
    out += "]\n";
    if (!proposal.connection.empty())
        out += "\n# To be put into the [connection] that is there already.\n[connection]\n";
    for (const auto& [name, value] : proposal.connection) ((out += name) += " = ") += value + '\n';
    return out;
}

constexpr ReportForm kForms[] = {
    {"table", "aligned for reading", asTable},
    {"json", "a JSON object", asJson},
    {"toml", "a section to paste", asToml},
};

}  // namespace

std::span<const ReportForm> discoveryForms() { return kForms; }

std::string writeReport(std::string_view form, const Findings& findings) {
    return std::find_if(std::begin(kForms), std::end(kForms),
                        [form](const ReportForm& one) { return form == one.name; })
        ->write(findings);
}

}  // namespace host
