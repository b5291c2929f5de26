// The opcodes of rows.
#pragma once

#include <iterator>
#include <string>

namespace host {

struct Opcode {
    char letter;
    const char* meaning;
};
inline constexpr Opcode kOpcodes[] = {
    {'i', "insert"}, {'u', "update"}, {'d', "delete"}, {'p', "upsert"}, {'s', "safe delete"},
};

constexpr bool isOpcodeLetter(char letter) {
    for (const Opcode& opcode : kOpcodes) {
        if (opcode.letter == letter) return true;
    }
    return false;
}

// For sentences: i (insert), u (update) ... and s (safe delete).
inline std::string opcodeList() {
    std::string list;
    for (const Opcode& opcode : kOpcodes) {
        const bool isLast = &opcode == std::end(kOpcodes) - 1;
        if (!list.empty()) list += isLast ? " and " : ", ";
        (((list += opcode.letter) += " (") += opcode.meaning) += ')';
    }
    return list;
}

}  // namespace host
