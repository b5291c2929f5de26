// A connection row: one message's fields as texts, by position ("RowByOrder") or by column name
// ("RowByNames"), with its opcode and the stream that it is for.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "host/toolkit/ServerRow.h"
#include "host/toolkit/ValueTyping.h"

namespace host {

class ErrorList;
class RowType;

class ConnectionRow {
public:
    struct Field {
        std::string name;  // rows by names only
        std::string text;
        bool null = true;
    };

    explicit ConnectionRow(bool byNames) : byNames_(byNames) {}

    void clear();  // no fields, no opcode; texts keep their memory for the next message
    int size() const { return static_cast<int>(used_); }

    // False: refused, nothing changed. A null value makes the field null.
    bool set(int index, const char* value);
    bool set(const char* name, const char* value);
    const Field* find(int index) const;  // null: there is no such field
    const Field* find(const char* name) const;

    // The server row, or null with one sentence in `errors`.
    ServerRow* toServerRow(std::int64_t sequence, ErrorList* errors) const;
    // Takes over fields and opcode. False, changed nothing: a row by names and a server row without columns.
    bool fromServerRow(const ServerRow& row);

    char op = '\0';  // none
    const RowType* type = nullptr;
    std::string streamName;  // counts where there is no type
    TemporalFormats formats;

private:
    Field& next();
    bool readOp(char& opcode, std::string& error) const;
    bool readFields(ServerRow& row, std::string& error) const;

    bool byNames_;
    std::vector<Field> fields_;  // the first used_ count
    size_t used_ = 0;
};

}  // namespace host
