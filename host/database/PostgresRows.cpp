#include "host/database/PostgresRows.h"

#include <algorithm>
#include <charconv>
#include <unordered_map>
#include <utility>

#include "host/database/PostgresMoments.h"
#include "host/database/RowStatements.h"
#include "host/database/Schema.h"
#include "host/database/StoredText.h"
#include "host/values/ModifiedUtf8.h"
#include "host/values/Text.h"
#include "host/values/ValueTyping.h"

namespace host {

namespace {

constexpr char kInsert[] = "i", kUpdate[] = "u", kUpsert[] = "p", kRemove[] = "d";
constexpr char kBring[] = "bring", kTakeAway[] = "take away";
constexpr std::string_view kNull = "\xC0\x80";                        // U+0000 in modified UTF-8
constexpr char kUntranslatable[] = "22021", kOutOfRange[] = "22008";  // as the server would say
constexpr size_t kTogether = 500;  // rows a statement: the server works while the next are made ready

constexpr size_t kOp = 0, kSequence = 1,
                 kAt = 3;  // behind the stream's columns; the ID of the message is between

bool isMoment(PostgresType type) {
    return type == PostgresType::kTimestamp || type == PostgresType::kTimestamptz;
}

bool setsKey(char op) { return op == 'p' || op == 's'; }

}  // namespace

PostgresRows::Form PostgresRows::formOf(const Column& column, const DatabaseType& there) {
    const ValueForm value = valueForm(column.type);
    switch (value) {
        case ValueForm::kFlag:
            return {value, PostgresType::kBoolean, "boolean", ""};
        case ValueForm::kInteger:
            return {value, PostgresType::kLong, "bigint", ""};
        case ValueForm::kReal:
            return {value, PostgresType::kFloat, "double precision", ""};
        case ValueForm::kBytes:
            return {value, PostgresType::kBytes, "bytea", ""};
        case ValueForm::kMicroseconds:
            // As a text it is exact to the last one.
            if (there.name == "interval") return {value, PostgresType::kText, "text", "::interval", true};
            return {value, PostgresType::kLong, "bigint", ""};
        case ValueForm::kText:
            return {value, PostgresType::kText, "text", ""};
        case ValueForm::kMoment:
            if (there.name == "timestamp") return {value, PostgresType::kTimestamp, "timestamp", ""};
            if (there.name == "timestamptz") return {value, PostgresType::kTimestamptz, "timestamptz", ""};
            break;
        case ValueForm::kDecimal:
            break;
    }
    return {value, PostgresType::kText, "text", "::" + there.name};
}

PostgresRows::PostgresRows(SinkMode mode, const RowType& type, const std::string& table,
                           const TableShape& shape)
    : mode_(mode), type_(type), refusals_(mode, type) {
    for (const Column& column : type.columns) {
        const std::string name = toUtf8(column.name);
        const auto there = std::find_if(shape.columns.begin(), shape.columns.end(),
                                        [&name](const TableColumn& one) { return one.name == name; });
        forms_.push_back(formOf(column, there->type));
        names_.push_back(name);
    }
    const RowStatements texts(mode, type, table, [this](size_t column) {
        if (column == type_.columns.size() + kAt) return std::string("now()");
        return '$' + std::to_string(column + 1) + "::" + forms_[column].sent + forms_[column].cast;
    });
    if (mode == SinkMode::kAppend) {
        forms_.push_back({ValueForm::kText, PostgresType::kText, "text", ""});
        forms_.push_back({ValueForm::kInteger, PostgresType::kLong, "bigint", ""});
        forms_.push_back({ValueForm::kText, PostgresType::kText, "text", ""});
    }
    keys_ = texts.keyColumns();
    std::vector<size_t> all;
    std::string values;
    for (size_t i = 0; i < forms_.size(); ++i) {
        all.push_back(i);
        arrays_.emplace_back(forms_[i].type);
        addToList(values, 'c' + std::to_string(i) + forms_[i].cast);
    }
    if (mode == SinkMode::kAppend) values += ", now()";
    const std::string bring =
        "INSERT INTO " + table + " (" + texts.columns() + ") SELECT " + values + " FROM " + together(all);
    statements_.emplace_back(kInsert, texts.insert());
    if (mode == SinkMode::kAppend) {
        statements_.emplace_back(kBring, bring);
        return;
    }
    std::string condition;
    for (const size_t key : keys_) {
        keyArrays_.emplace_back(forms_[key].type);
        addToList(condition,
                  "t." + quotedName(toUtf8(type.columns[key].name)) + " = c" + std::to_string(key) +
                      forms_[key].cast,
                  " AND ");
    }
    statements_.emplace_back(kUpdate, texts.update());
    statements_.emplace_back(kUpsert, texts.upsert());
    const RowStatements byKey(mode, type, table, [this](size_t column) {
        const auto place = std::find(keys_.begin(), keys_.end(), column) - keys_.begin();
        return '$' + std::to_string(place + 1) + "::" + forms_[column].sent + forms_[column].cast;
    });
    statements_.emplace_back(kRemove, byKey.remove());
    statements_.emplace_back(kTakeAway,
                             "DELETE FROM " + table + " t USING " + together(keys_) + " WHERE " + condition);
    statements_.emplace_back(kBring, bring + texts.onConflict());
}

// unnest($1::text[], $2::bigint[]) AS r(c0, c4)
std::string PostgresRows::together(const std::vector<size_t>& columns) const {
    std::string arrays, names;
    for (size_t i = 0; i < columns.size(); ++i) {
        addToList(arrays, '$' + std::to_string(i + 1) + "::" + forms_[columns[i]].sent + "[]");
        addToList(names, 'c' + std::to_string(columns[i]));
    }
    return "unnest(" + arrays + ") AS r(" + names + ')';
}

void PostgresRows::prepare(PostgresConnection& connection) const {
    for (const auto& [name, text] : statements_) connection.sendPrepare(name, text);
    connection.sync();
    for (size_t i = 0; i < statements_.size(); ++i) connection.receive();
    connection.finish();
}

std::optional<Reject> PostgresRows::unfit(const ServerRow& row) const {
    for (size_t i = 0; i < row.values.size(); ++i) {
        const auto* text = std::get_if<std::string>(&row.values[i]);
        if (text == nullptr) continue;
        const std::string& name = names_[i];
        if (forms_[i].value == ValueForm::kText && text->find(kNull) != std::string::npos)
            return refusals_.refused(
                row, {kUntranslatable,
                      "column " + inQuotes(name) + " has a U+0000, which PostgreSQL cannot store.", name});
        if (isMoment(forms_[i].type) && !postgresMoment(*text))
            return refusals_.refused(row, {kOutOfRange,
                                           "column " + inQuotes(name) + " is " + inQuotes(*text) +
                                               ", which is beyond PostgreSQL's timestamps.",
                                           name});
    }
    return refusals_.unfit(row);
}

template <typename Out>
void PostgresRows::addValue(Out& out, size_t column, const Value& value) {
    if (isNull(value)) {
        out.addNull();
    } else if (const auto* flag = std::get_if<bool>(&value)) {
        out.add(*flag);
    } else if (const auto* integer = std::get_if<std::int64_t>(&value)) {
        out.add(*integer);
    } else if (const auto* number = std::get_if<double>(&value)) {
        out.add(*number);
    } else {
        const auto& text = std::get<std::string>(value);
        if (isMoment(forms_[column].type)) {
            out.add(postgresMoment(text).value_or(0));
            return;
        }
        text_.clear();
        if (forms_[column].value == ValueForm::kBytes) {
            appendHexBytes(text, text_);
        } else {
            appendUtf8(text, text_);
        }
        if (forms_[column].isInterval) text_ += " microseconds";
        if (forms_[column].value == ValueForm::kMicroseconds && !forms_[column].isInterval) {
            std::int64_t count = 0;
            std::from_chars(text_.data(), text_.data() + text_.size(), count);
            out.add(count);
        } else {
            out.add(std::string_view(text_));
        }
    }
}

void PostgresRows::send(PostgresConnection& connection, const Change& change) {
    const ServerRow& row = *change.row;
    const bool removes = mode_ == SinkMode::kApply && (row.op == 'd' || row.op == 's');
    parameters_.clear();
    if (removes) {
        for (const size_t key : keys_) addValue(parameters_, key, row.values[key]);
    } else {
        for (size_t i = 0; i < row.values.size(); ++i) addValue(parameters_, i, row.values[i]);
    }
    if (mode_ == SinkMode::kAppend) {
        parameters_.add(std::string_view(&row.op, 1))
            .add(row.sequence)
            .add(std::string_view(*change.messageId));
        connection.send(kInsert, parameters_);
    } else {
        connection.send(removes         ? kRemove
                        : row.op == 'u' ? kUpdate
                        : row.op == 'p' ? kUpsert
                                        : kInsert,
                        parameters_);
    }
}

bool PostgresRows::canBring(const std::vector<Change>& changes) const {
    return changes.size() > 1 && (mode_ == SinkMode::kAppend ||
                                  std::all_of(changes.begin(), changes.end(),
                                              [](const Change& one) { return setsKey(one.row->op); }));
}

void PostgresRows::fill(std::vector<PostgresArray>& arrays, const std::vector<size_t>& columns,
                        std::span<const Change* const> changes) {
    const size_t own = type_.columns.size();
    for (size_t i = 0; i < columns.size(); ++i) {
        PostgresArray& array = arrays[i];
        array.clear();
        const size_t column = columns[i];
        for (const Change* change : changes) {
            const ServerRow& row = *change->row;
            if (column < own) {
                addValue(array, column, row.values[column]);
            } else if (column == own + kOp) {
                array.add(std::string_view(&row.op, 1));
            } else if (column == own + kSequence) {
                array.add(row.sequence);
            } else {
                array.add(std::string_view(*change->messageId));
            }
        }
    }
}

std::vector<const Change*> PostgresRows::lastOfKeys(const std::vector<const Change*>& changes) {
    std::unordered_map<std::string, size_t> last;
    last.reserve(changes.size());
    std::vector<const Change*> kept(changes.size(), nullptr);
    std::string key;
    for (size_t i = 0; i < changes.size(); ++i) {
        key.clear();
        for (const size_t column : keys_) {
            const std::string part = writeValue(changes[i]->row->values[column]);
            key.append(std::to_string(part.size())).append(1, ' ').append(part);
        }
        const auto [found, isNew] = last.try_emplace(key, i);
        if (!isNew) kept[found->second] = nullptr;
        kept[i] = changes[i];
        found->second = i;
    }
    kept.erase(std::remove(kept.begin(), kept.end(), nullptr), kept.end());
    return kept;
}

std::vector<std::optional<size_t>> PostgresRows::sendTogether(PostgresConnection& connection,
                                                              const std::vector<const Change*>& changes) {
    std::vector<const Change*> brought = mode_ == SinkMode::kAppend ? changes : lastOfKeys(changes);
    const auto removed = mode_ == SinkMode::kAppend
                             ? brought.end()
                             : std::stable_partition(brought.begin(), brought.end(),
                                                     [](const Change* one) { return one->row->op == 'p'; });
    const std::vector<const Change*> taken(removed, brought.end());
    brought.erase(removed, brought.end());
    std::vector<std::optional<size_t>> counts;
    const auto sendAll = [&](const char* name, std::vector<PostgresArray>& arrays) {
        parameters_.clear();
        for (PostgresArray& array : arrays) parameters_.add(array.bytes());
        connection.send(name, parameters_);
    };
    std::vector<size_t> columns(forms_.size());
    for (size_t i = 0; i < columns.size(); ++i) columns[i] = i;
    for (size_t begin = 0; begin < brought.size(); begin += kTogether) {
        const size_t count = std::min(kTogether, brought.size() - begin);
        fill(arrays_, columns, std::span(brought).subspan(begin, count));
        sendAll(kBring, arrays_);
        connection.push();
        counts.emplace_back(count);
    }
    if (!taken.empty()) {
        fill(keyArrays_, keys_, taken);
        sendAll(kTakeAway, keyArrays_);
        counts.emplace_back(std::nullopt);
    }
    return counts;
}

}  // namespace host
