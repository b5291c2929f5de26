#include "host/database/Names.h"

#include <algorithm>
#include <map>

#include "host/values/ModifiedUtf8.h"
#include "host/values/Text.h"

namespace host {

namespace {

constexpr const char* kOwnTables[] = {kLedgerTable, kRejectedTable};
constexpr const char* kOwnColumns[] = {kOpColumn, kSeqColumn, kMessageIdColumn, kAtColumn};

class NameCheck {
public:
    explicit NameCheck(DatabaseKind kind) : rules_(rulesOf(kind)) {}

    void checkPlace(const SinkSettings& settings) {
        if (rules_.hasSchemas) check("sink.schema is ", settings.schema);
        check("sink.table is ", settings.table);
        if (isOneOf(kOwnTables, settings.table))
            found.push_back("sink.table is " + inQuotes(settings.table) +
                            ", a table of the sink's own; it must be another.");
    }

    void checkColumns(const SinkSettings& settings, const std::vector<Column>& columns) {
        std::map<std::string, std::string> seen;
        for (const Column& column : columns) {
            const std::string text = toUtf8(column.name);
            check("stream.columns has ", text);
            if (settings.mode == SinkMode::kAppend && isOneOf(kOwnColumns, text))
                found.push_back(
                    "stream.columns has " + inQuotes(text) +
                    ", a column of the sink's own where mode = \"append\"; it needs another name.");
            const auto [other, isNew] = seen.emplace(knownName(rules_.kind, text), text);
            if (!isNew && other->second != text)
                found.push_back("stream.columns has " + inQuotes(other->second) + " and " + inQuotes(text) +
                                ", which are one name to " + rules_.name +
                                "; every name must be different there.");
        }
    }

    std::vector<std::string> found;

private:
    template <typename Names>
    bool isOneOf(const Names& names, const std::string& text) const {
        return std::find(std::begin(names), std::end(names), knownName(rules_.kind, text)) != std::end(names);
    }

    void check(const std::string& what, const std::string& text) {
        if (text.empty()) found.push_back(what + "\"\"; a name in a database is not empty.");
        if (text.find('\0') != std::string::npos)
            found.push_back(what + inQuotes(text) + "; a name in a database has no U+0000.");
        if (rules_.longestName > 0 && text.size() > rules_.longestName)
            found.push_back(what + inQuotes(text) + ", " + std::to_string(text.size()) + " bytes, of which " +
                            rules_.name + " would keep " + std::to_string(rules_.longestName) +
                            "; it must be no longer than that.");
    }

    const DatabaseRules& rules_;
};

}  // namespace

std::string quotedName(const std::string& name) {
    std::string quoted = "\"";
    for (const char c : name) {
        if (c == '"') quoted += '"';
        quoted += c;
    }
    return quoted += '"';
}

std::string knownName(DatabaseKind kind, const std::string& name) {
    return rulesOf(kind).foldsCase ? lowerCase(name) : name;
}

std::vector<std::string> nameProblems(DatabaseKind kind, const SinkSettings& settings,
                                      const std::vector<Column>& columns) {
    NameCheck check(kind);
    check.checkPlace(settings);
    check.checkColumns(settings, columns);
    return std::move(check.found);
}

}  // namespace host
