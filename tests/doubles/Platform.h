// The stand-in server's own platform library, and what a test wants to see of its use: every log line and error
// as it comes, and the connection rows. A program that links this makes its rows through it.
#pragma once

#include <list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "adapter/Adapter.h"
#include "host/toolkit/Context.h"
#include "host/toolkit/RowType.h"
#include "host/values/ServerRow.h"

namespace fake {

using Texts = std::vector<std::string>;

struct Platform {
    Platform();
    ~Platform();
    Platform(const Platform&) = delete;
    Platform& operator=(const Platform&) = delete;

    // Hands all that follows to the adapter, and an error list when it has none.
    void serve(Adapter& adapter);
    // A row type of the stream "Trades" for the adapter; it lives as long as this.
    void useColumns(Adapter& adapter, std::vector<host::Column> columns);
    void useStrings(Adapter& adapter, const Texts& names);  // columns of strings

    host::Context context;
    host::Parameters params;
    Texts errors;
    Texts logs;  // each behind its level and a space
    Texts takeLogs() { return std::exchange(logs, {}); }

private:
    std::list<host::RowType> types_;
    void* errorList_;
};

extern std::vector<void*> rows;  // created and not deleted, the newest last

// As text: the opcode, then the fields, as in "i IBM,100,null" or "p Symbol=IBM" (opcode '-': none). Of a row
// by names the fields Symbol, Price, A, B, C and KEL_OPS.
std::string show(void* row);
std::string show(const host::ServerRow& row);  // as in "i IBM,100,null"
// The same, or "none"; the row is released.
std::string taken(void* serverRow);

}  // namespace fake
