// The server's toolkit for tests: every call is recorded as text, as in "setOp(row,i)", and rows, parameters,
// errors and the message catalogue work in memory. A call that only hands something back answers by its own
// name, so that a test sees what came from where.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace fake {

// A handle that calls print as `name`; the same name gives the same handle.
void* handle(const std::string& name);

struct Column {
    std::string name;
    uint32_t type = 5;
    bool key = false;
};

struct Row {
    std::string type;
    std::map<int, std::optional<std::string>> fields;
    std::vector<std::pair<std::string, std::optional<std::string>>> named;
    char op = 0;
};

// As text: the opcode, then the fields, as in "i IBM,100,null" or "p Symbol=IBM" (opcode '-': none).
std::string show(const Row& row);

struct Toolkit {
    std::vector<std::string> calls;
    std::map<std::string, std::string> params;
    std::vector<std::string> errors;  // of every list
    std::string stream = "Trades";
    std::vector<Column> columns;
    Row* row = nullptr;               // the row created last
    std::vector<std::string> posted;  // rows that toRow took, as text
    bool toRowFails = false;
    int state = -1;
    std::vector<void*> controlRows;  // what the transaction of a control stream holds
    bool hasTransaction = true;

    size_t liveRows() const;  // connection rows created and not deleted

    // The calls of the named functions alone, and none left behind.
    std::vector<std::string> takeCalls();
    std::vector<std::string> takeCalls(const std::string& function);
};

// The one toolkit of the process; `fresh` makes it new.
Toolkit& toolkit();
Toolkit& fresh();

}  // namespace fake
