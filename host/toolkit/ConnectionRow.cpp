#include "host/toolkit/ConnectionRow.h"

#include <algorithm>
#include <memory>

#include "host/toolkit/ErrorList.h"
#include "host/toolkit/NewText.h"
#include "host/toolkit/RowType.h"
#include "toolkit/kel_adapter_util.h"

namespace host {

namespace {

constexpr int kNone = -1;

}  // namespace

ConnectionRow::ConnectionRow(bool byNames) : byNames_(byNames) { setType(nullptr); }

void ConnectionRow::clear() {
    if (fields_.size() * sizeof(Field) + textBytes_ > kMostMemory) {
        fields_ = std::vector<Field>();
        textBytes_ = 0;
    }
    kept_ = count_ = 0;
    std::fill(positions_.begin(), positions_.end(), kNone);
    others_.clear();
    op = '\0';
}

void ConnectionRow::setType(const RowType* newType) {
    type_ = newType;
    const size_t columns = type_ != nullptr ? type_->columns.size() : 0;
    hasColumns_ = columns > 0;
    most_ = hasColumns_ ? columns + kMostSurplus : kMostFields;
    if (!byNames_) return;
    positions_.assign(columns + 1, kNone);
    others_.clear();
    for (size_t i = 0; i < kept_; ++i) remember(static_cast<int>(i), slotOf(fields_[i].name));
}

ConnectionRow::Field& ConnectionRow::next() {
    if (kept_ == fields_.size()) fields_.emplace_back();
    Field& field = fields_[kept_++];
    field.null = true;
    return field;
}

void ConnectionRow::setText(std::string& text, const char* value) {
    textBytes_ -= text.capacity();
    text = value;
    textBytes_ += text.capacity();
}

void ConnectionRow::assign(Field& field, const char* value) {
    field.null = value == nullptr;
    if (value != nullptr) setText(field.text, value);
}

bool ConnectionRow::set(int index, const char* value) {
    if (byNames_ || index < 0) return false;
    const auto at = static_cast<size_t>(index);
    if (at >= most_ && !hasColumns_) return false;
    if (at >= kept_) {
        const size_t kept = std::min(at + 1, most_);
        while (kept_ < kept) next();
        count_ = std::max(count_, at + 1);
    }
    if (at < kept_) assign(fields_[at], value);
    return true;
}

bool ConnectionRow::set(const char* name, const char* value) {
    if (!byNames_ || name == nullptr) return false;
    const int slot = slotOf(name);
    int position = positionOf(name, slot);
    if (position == kNone) {
        if (kept_ >= most_ && !hasColumns_) return false;
        ++count_;
        if (slot == kNone && kept_ >= most_) return true;
        position = static_cast<int>(kept_);
        setText(next().name, name);
        remember(position, slot);
    }
    assign(fields_[static_cast<size_t>(position)], value);
    return true;
}

// The index of the column, behind them all that of the opcode; none for any other name.
int ConnectionRow::slotOf(std::string_view name) const {
    const int column = type_ != nullptr ? type_->indexOf(name) : kNone;
    return column == kNone && name == kOpcodeField ? static_cast<int>(positions_.size()) - 1 : column;
}

int ConnectionRow::positionOf(std::string_view name, int slot) const {
    if (slot != kNone) return positions_[static_cast<size_t>(slot)];
    const auto found = others_.find(name);
    return found != others_.end() ? found->second : kNone;
}

void ConnectionRow::remember(int position, int slot) {
    Field& field = fields_[static_cast<size_t>(position)];
    field.slot = slot;
    if (slot != kNone) {
        positions_[static_cast<size_t>(slot)] = position;
    } else {
        others_.emplace(field.name, position);
    }
}

const ConnectionRow::Field* ConnectionRow::find(int index) const {
    static const Field notKept;
    if (byNames_ || index < 0 || static_cast<size_t>(index) >= count_) return nullptr;
    const auto at = static_cast<size_t>(index);
    return at < kept_ ? &fields_[at] : &notKept;
}

const ConnectionRow::Field* ConnectionRow::find(const char* name) const {
    if (!byNames_ || name == nullptr) return nullptr;
    const int position = positionOf(name, slotOf(name));
    return position != kNone ? &fields_[static_cast<size_t>(position)] : nullptr;
}

bool ConnectionRow::fromServerRow(const ServerRow& row) {
    if (byNames_ && row.type == nullptr) return false;
    clear();
    op = row.op;
    for (size_t i = 0; i < row.values.size(); ++i) {
        const std::string text = writeValue(row.values[i]);
        const char* value = isNull(row.values[i]) ? nullptr : text.c_str();
        byNames_ ? set(row.type->columns[i].name.c_str(), value) : set(static_cast<int>(i), value);
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
    host::rowOf(row)->setType(static_cast<const host::RowType*>(rowType));
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
