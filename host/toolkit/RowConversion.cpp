// From a connection row to a server row: every field typed by its column, or one sentence why not.
#include <memory>

#include "host/toolkit/ConnectionRow.h"
#include "host/toolkit/Context.h"
#include "host/toolkit/ErrorList.h"
#include "host/toolkit/RowType.h"
#include "host/values/Opcodes.h"
#include "host/values/Text.h"

namespace host {

namespace {

std::string columnNames(const RowType& type) {
    std::string names;
    for (const Column& column : type.columns) addToList(names, column.name);
    return names;
}

std::string fieldText(const ConnectionRow::Field& field) {
    return field.null ? "null" : "the text " + quoted(field.text);
}

}  // namespace

bool ConnectionRow::readOp(char& opcode, Refusal& refusal) const {
    const Field* named = find(kOpcodeField);
    opcode = named != nullptr && !named->null ? named->text.c_str()[0] : op;
    const bool isGiven = opcode != '\0' || (named != nullptr && !named->null);
    if (!isGiven) opcode = 'i';
    if (isOpcodeLetter(opcode)) return true;
    refusal.text = "the opcode " + quoted(opcode != '\0' ? std::string(1, opcode) : std::string()) +
                   " is none; allowed are " + opcodeList() + ".";
    return false;
}

bool ConnectionRow::readFields(ServerRow& row, Refusal& refusal) const {
    for (size_t i = 0; i < kept_; ++i) {
        const Field& field = fields_[i];
        if (byNames_ && field.name == kOpcodeField) continue;
        const int index = byNames_ ? field.slot : static_cast<int>(i);
        const Column* column = type_->at(index);
        if (column == nullptr) {
            refusal.text = byNames_
                               ? "there is no column " + quoted(field.name) + " for " + fieldText(field) +
                                     "; the columns are " + columnNames(*type_) + "."
                               : "field " + std::to_string(i) + " (counted from 0), " + fieldText(field) +
                                     ", has no column; there are " + std::to_string(type_->columns.size()) +
                                     ": " + columnNames(*type_) + ".";
            return false;
        }
        std::string reason;
        if (!field.null &&
            !readValue(column->type, field.text, formats, row.values[static_cast<size_t>(index)], reason)) {
            refusal.column = column->name;
            refusal.text = "column \"" + column->name + "\" (" + typeName(column->type) + ") cannot hold " +
                           fieldText(field) + ": " + reason + ".";
            return false;
        }
    }
    for (size_t i = 0; i < row.values.size(); ++i) {
        const Column& column = type_->columns[i];
        if (column.key && isNull(row.values[i])) {
            refusal.column = column.name;
            refusal.text = "key column \"" + column.name + "\" (" + typeName(column.type) +
                           ") is null in the message; a key column needs a value.";
            return false;
        }
    }
    return true;
}

ServerRow* ConnectionRow::toServerRow(std::int64_t sequence, ErrorList* errors) const {
    auto row = std::make_unique<ServerRow>();
    row->type = type_;
    row->streamName = type_ != nullptr ? type_->streamName : streamName;
    row->sequence = sequence;
    Refusal refusal;
    bool converted = readOp(row->op, refusal);
    if (converted && type_ != nullptr) {
        row->values.resize(type_->columns.size());
        converted = readFields(*row, refusal);
    } else if (converted) {
        for (size_t i = 0; i < kept_; ++i) {
            row->values.push_back(fields_[i].null ? Value() : Value(fields_[i].text));
        }
    }
    if (converted) return row.release();
    if (errors != nullptr) {
        const RowFault fault{refusal.column.c_str()};
        errors->add(("Stream \"" + row->streamName + "\": " + refusal.text).c_str(), &fault);
    }
    return nullptr;
}

}  // namespace host
