// The platform library as nothing but a record of its calls, all of it made by recording-toolkit from the library's
// own header. A program links this or the library.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

#include "toolkit/kel_adapter_util.h"

namespace fake {

// Arguments and answers of all types as words.
using Word = uintptr_t;

template <typename T>
Word toWord(T value) {
    if constexpr (std::is_pointer_v<T>) {
        return reinterpret_cast<Word>(value);
    } else {
        return static_cast<Word>(value);
    }
}

template <typename T>
T fromWord(Word word) {
    if constexpr (std::is_pointer_v<T>) {
        return reinterpret_cast<T>(word);
    } else if constexpr (std::is_same_v<T, bool>) {
        return word % 2 != 0;
    } else {
        return static_cast<T>(word);
    }
}

struct Call {
    std::string function;
    std::vector<Word> arguments;
    bool operator==(const Call&) const = default;
};

inline std::vector<Call> calls;
inline Word answer = 0;  // of every function

template <typename Answer, typename... Arguments>
Answer record(const char* function, Arguments... arguments) {
    calls.push_back({function, {toWord(arguments)...}});
    if constexpr (!std::is_void_v<Answer>) return fromWord<Answer>(answer);
}

extern const std::set<std::string> kToolkitFunctions;

}  // namespace fake
