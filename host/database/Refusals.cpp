#include "host/database/Refusals.h"

#include <algorithm>

#include "host/database/ColumnTypes.h"
#include "host/values/ModifiedUtf8.h"
#include "host/values/Opcodes.h"
#include "host/values/Text.h"
#include "host/values/ValueTyping.h"

namespace host {

namespace {

constexpr std::string_view kNull = "\xC0\x80";  // U+0000 in modified UTF-8

bool hasNull(const Column& column, const Value& value) {
    const auto* text = std::get_if<std::string>(&value);
    return text != nullptr && valueForm(column.type) == ValueForm::kText &&
           text->find(kNull) != std::string::npos;
}

const char* meaningOf(char letter) {
    const auto* found = std::find_if(std::begin(kOpcodes), std::end(kOpcodes),
                                     [letter](const Opcode& one) { return one.letter == letter; });
    return found != std::end(kOpcodes) ? found->meaning : "no opcode";
}

std::string shownValue(const Value& value) {
    const std::string text = toUtf8(writeValue(value));
    return std::holds_alternative<std::string>(value) ? quoted(text) : text;
}

}  // namespace

std::string Refusals::keyOf(const ServerRow& row) const {
    std::string key;
    for (size_t i = 0; i < type_.columns.size(); ++i) {
        if (type_.columns[i].key)
            addToList(key, toUtf8(type_.columns[i].name) + " = " + shownValue(row.values[i]));
    }
    return key;
}

Reject Refusals::reject(const ServerRow& row, const std::string& text) const {
    const char* what = mode_ == SinkMode::kApply ? meaningOf(row.op) : "append";
    return {Stage::kSink, "", what + (": " + text), ""};
}

std::optional<Reject> Refusals::withoutEffect(const ServerRow& row) const {
    if (mode_ == SinkMode::kAppend || row.op == 'p') return reject(row, "the database left the row out.");
    if (row.op == 's') return std::nullopt;
    if (row.op == 'i') return reject(row, "a row with the key " + keyOf(row) + " is there already.");
    return reject(row, "there is no row with the key " + keyOf(row) + '.');
}

Reject Refusals::refused(const ServerRow& row, const DatabaseError& error) const {
    Reject reject = this->reject(row, error.text);
    reject.key = error.code;
    reject.column = error.column;
    return reject;
}

std::optional<Reject> Refusals::unfit(const ServerRow& row) const {
    for (size_t i = 0; i < type_.columns.size(); ++i) {
        const Column& column = type_.columns[i];
        const bool lacksKey = column.key && mode_ == SinkMode::kApply && isNull(row.values[i]);
        if (!lacksKey && !hasNull(column, row.values[i])) continue;
        const std::string name = toUtf8(column.name);
        Reject found = reject(row, lacksKey ? "the key column " + inQuotes(name) + " is null."
                                            : "column " + inQuotes(name) +
                                                  " has a U+0000, which a text in a database cannot have.");
        found.column = name;
        return found;
    }
    return std::nullopt;
}

}  // namespace host
