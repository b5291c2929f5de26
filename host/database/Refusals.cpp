#include "host/database/Refusals.h"

#include <algorithm>

#include "host/values/ModifiedUtf8.h"
#include "host/values/Opcodes.h"
#include "host/values/Text.h"
#include "host/values/ValueTyping.h"

namespace host {

namespace {

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
    if (mode_ == SinkMode::kAppend) return std::nullopt;
    for (size_t i = 0; i < type_.columns.size(); ++i) {
        if (!type_.columns[i].key || !isNull(row.values[i])) continue;
        Reject found = reject(row, "the key column " + inQuotes(toUtf8(type_.columns[i].name)) + " is null.");
        found.column = toUtf8(type_.columns[i].name);
        return found;
    }
    return std::nullopt;
}

}  // namespace host
