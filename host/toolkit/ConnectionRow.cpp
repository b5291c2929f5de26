#include "host/toolkit/ConnectionRow.h"

#include <memory>

#include "host/toolkit/ErrorList.h"
#include "host/toolkit/HostContext.h"
#include "toolkit/kel_adapter_util.h"

namespace host {

void ConnectionRow::clear() {
    used_ = 0;
    op = '\0';
}

ConnectionRow::Field& ConnectionRow::next() {
    if (used_ == fields_.size()) fields_.emplace_back();
    Field& field = fields_[used_++];
    field.null = true;
    return field;
}

namespace {

void assign(ConnectionRow::Field& field, const char* value) {
    field.null = value == nullptr;
    if (value != nullptr) field.text = value;
}

}  // namespace

bool ConnectionRow::set(int index, const char* value) {
    if (byNames_ || index < 0) return false;
    while (used_ <= static_cast<size_t>(index)) next();
    assign(fields_[static_cast<size_t>(index)], value);
    return true;
}

bool ConnectionRow::set(const char* name, const char* value) {
    if (!byNames_ || name == nullptr) return false;
    auto* field = const_cast<Field*>(find(name));
    if (field == nullptr) {
        field = &next();
        field->name = name;
    }
    assign(*field, value);
    return true;
}

const ConnectionRow::Field* ConnectionRow::find(int index) const {
    const bool isThere = !byNames_ && index >= 0 && index < size();
    return isThere ? &fields_[static_cast<size_t>(index)] : nullptr;
}

const ConnectionRow::Field* ConnectionRow::find(const char* name) const {
    if (!byNames_ || name == nullptr) return nullptr;
    for (size_t i = 0; i < used_; ++i) {
        if (fields_[i].name == name) return &fields_[i];
    }
    return nullptr;
}

bool ConnectionRow::fromServerRow(const ServerRow& row) {
    if (byNames_ && row.type == nullptr) return false;
    clear();
    op = row.op;
    for (size_t i = 0; i < row.values.size(); ++i) {
        Field& field = next();
        if (byNames_) field.name = row.type->columns[i].name;
        field.null = std::holds_alternative<std::monostate>(row.values[i]);
        if (!field.null) field.text = writeValue(row.values[i]);
    }
    return true;
}

namespace {

ConnectionRow* rowOf(void* handle) { return static_cast<ConnectionRow*>(handle); }

bool handOut(const ConnectionRow::Field* field, const char** value) {
    if (field == nullptr) return false;
    *value = field->null ? nullptr : field->text.c_str();
    return true;
}

const char* orEmpty(const char* text) { return text != nullptr ? text : ""; }

// An empty format means the default one.
void setFormat(std::string& format, const char* text, const char* byDefault) {
    format = *orEmpty(text) != '\0' ? text : byDefault;
}

}  // namespace

}  // namespace host

using host::ConnectionRow;

extern "C" {

void* createConnectionRow(const char* rowType) {
    const std::string_view name = host::orEmpty(rowType);
    if (name != "RowByOrder" && name != "RowByNames") return nullptr;
    auto row = std::make_unique<ConnectionRow>(name == "RowByNames");
    setTimeFormat(row.get(), nullptr);
    setDateFormat(row.get(), nullptr);
    setTimestampFormat(row.get(), nullptr);
    return row.release();
}
void deleteConnectionRow(void* row) { delete host::rowOf(row); }
void clearData(void* row) { host::rowOf(row)->clear(); }
int size(void* row) { return host::rowOf(row)->size(); }
bool setFieldAsStringWithIndex(void* row, int index, const char* value) {
    return host::rowOf(row)->set(index, value);
}
bool getFieldAsStringWithIndex(void* row, int index, const char** value) {
    return host::handOut(host::rowOf(row)->find(index), value);
}
bool setFieldAsStringWithKey(void* row, const char* name, const char* value) {
    return host::rowOf(row)->set(name, value);
}
bool getFieldAsStringWithKey(void* row, const char* name, const char** value) {
    return host::handOut(host::rowOf(row)->find(name), value);
}
void setOp(void* row, char op) { host::rowOf(row)->op = op; }
char getOp(void* row) { return host::rowOf(row)->op; }
void setStreamType(void* row, void* rowType, bool /*flag*/) {
    host::rowOf(row)->type = static_cast<const host::RowType*>(rowType);
}
void setStreamName(void* row, const char* name) { host::rowOf(row)->streamName = host::orEmpty(name); }
void setTimeFormat(void* row, const char* format) {
    host::setFormat(host::rowOf(row)->formats.time, format, host::kDefaultTimeFormat);
}
void setDateFormat(void* row, const char* format) {
    host::setFormat(host::rowOf(row)->formats.date, format, host::kDefaultDateFormat);
}
void setTimestampFormat(void* row, const char* format) {
    host::setFormat(host::rowOf(row)->formats.timestamp, format, host::kDefaultDateFormat);
}
void* toRow(void* row, int64_t sequence, void* errors) {
    return host::rowOf(row)->toServerRow(sequence, static_cast<host::ErrorList*>(errors));
}
bool fromRow(void* row, void* serverRow) {
    return serverRow != nullptr &&
           host::rowOf(row)->fromServerRow(*static_cast<const host::ServerRow*>(serverRow));
}

}  // extern "C"
