#include "host/database/RowStatements.h"

#include <algorithm>
#include <utility>

#include "host/database/Schema.h"
#include "host/values/ModifiedUtf8.h"
#include "host/values/Text.h"

namespace host {

RowStatements::RowStatements(SinkMode mode, const RowType& type, std::string table, Placeholder placeholder)
    : mode_(mode), table_(std::move(table)), placeholder_(std::move(placeholder)) {
    for (const Column& column : type.columns) {
        names_.push_back(quotedName(toUtf8(column.name)));
        isKey_.push_back(column.key && mode == SinkMode::kApply);
    }
    if (mode == SinkMode::kApply) return;
    for (const char* name : {kOpColumn, kSeqColumn, kMessageIdColumn, kAtColumn}) {
        names_.push_back(quotedName(name));
        isKey_.push_back(false);
    }
}

std::string RowStatements::columns() const {
    std::string list;
    for (const std::string& name : names_) addToList(list, name);
    return list;
}

std::string RowStatements::keys() const {
    std::string list;
    for (const size_t column : keyColumns()) addToList(list, names_[column]);
    return list;
}

std::vector<size_t> RowStatements::keyColumns() const {
    std::vector<size_t> found;
    for (size_t i = 0; i < names_.size(); ++i) {
        if (isKey_[i]) found.push_back(i);
    }
    return found;
}

std::string RowStatements::whereKey() const {
    std::string all;
    for (const size_t column : keyColumns())
        addToList(all, names_[column] + " = " + placeholder_(column), " AND ");
    return " WHERE " + all;
}

// Of a table that has nothing but its key the first column is set to what it is.
std::string RowStatements::pairs(const std::function<std::string(size_t)>& value) const {
    std::string list;
    for (size_t i = 0; i < names_.size(); ++i) {
        if (!isKey_[i]) addToList(list, names_[i] + " = " + value(i));
    }
    return list.empty() ? names_.front() + " = " + value(0) : list;
}

std::string RowStatements::insert() const {
    std::string values;
    for (size_t i = 0; i < names_.size(); ++i) addToList(values, placeholder_(i));
    std::string text = "INSERT INTO " + table_ + " (" + columns() + ") VALUES (" + values + ')';
    if (mode_ == SinkMode::kApply) text += " ON CONFLICT (" + keys() + ") DO NOTHING";
    return text;
}

std::string RowStatements::update() const {
    return "UPDATE " + table_ + " SET " + pairs(placeholder_) + whereKey();
}

std::string RowStatements::remove() const { return "DELETE FROM " + table_ + whereKey(); }

std::string RowStatements::onConflict() const {
    return " ON CONFLICT (" + keys() + ") DO UPDATE SET " +
           pairs([this](size_t column) { return "excluded." + names_[column]; });
}

std::string RowStatements::upsert() const {
    const std::string text = insert();
    return text.substr(0, text.rfind(" ON CONFLICT")) + onConflict();
}

}  // namespace host
