// A connection row: one message's fields as texts, by position ("RowByOrder") or by column name
// ("RowByNames"), with its opcode and the stream that it is for.
//
// A message may bring far more fields than its stream has columns. Beyond the columns of its type a row keeps
// a bounded number of fields, so that a discovery can read them, and only counts the rest: none of them could
// become a value. A row without a type, or with one that has no columns, keeps all.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "host/values/ServerRow.h"
#include "host/values/ValueTyping.h"

namespace host {

class ErrorList;
class RowType;

class ConnectionRow {
public:
    struct Field {
        // Rows by names only: the name, and where it is looked up.
        std::string name;
        int slot = 0;
        bool null = true;
        std::string text;
    };

    static constexpr char kOpcodeField[] = "KEL_OPS";  // of rows by names
    static constexpr size_t kMostFields = 100'000;     // of a row whose type has no columns
    static constexpr size_t kMostSurplus = 4096;       // fields kept beyond the columns of the type
    static constexpr size_t kMostMemory = 1 << 20;     // kept from message to message, in bytes

    explicit ConnectionRow(bool byNames);

    void clear();  // no fields, no opcode; fields keep their memory for the next message unless it is much
    int size() const { return static_cast<int>(count_); }

    void setType(const RowType* newType);
    const RowType* type() const { return type_; }

    // False: refused, nothing changed. A null value makes the field null.
    bool set(int index, const char* value);
    bool set(const char* name, const char* value);
    // Null: there is no such field. One that is not kept is by index a null field, by name none.
    const Field* find(int index) const;
    const Field* find(const char* name) const;

    // The server row, or null with one sentence in `errors`.
    ServerRow* toServerRow(std::int64_t sequence, ErrorList* errors) const;
    // Takes over fields and opcode. False, changed nothing: a row by names and a server row without columns.
    bool fromServerRow(const ServerRow& row);

    char op = '\0';          // none
    std::string streamName;  // counts where there is no type
    TemporalFormats formats;

private:
    Field& next();
    void setText(std::string& text, const char* value);
    void assign(Field& field, const char* value);
    int slotOf(std::string_view name) const;
    int positionOf(std::string_view name, int slot) const;
    void remember(int position, int slot);
    struct Refusal {
        std::string text;
        std::string column;
    };
    bool readOp(char& opcode, Refusal& refusal) const;
    bool readFields(ServerRow& row, Refusal& refusal) const;

    bool byNames_;
    const RowType* type_;
    size_t most_;  // fields that are kept
    bool hasColumns_ = false;
    std::vector<Field> fields_;  // the first kept_ count
    size_t kept_ = 0;
    size_t count_ = 0;  // with those that are not kept
    size_t textBytes_ = 0;

    // Rows by names: where in fields_ the columns' fields are, behind them the opcode's, and those of other
    // names.
    std::vector<int> positions_;
    std::map<std::string, int, std::less<>> others_;
};

}  // namespace host
