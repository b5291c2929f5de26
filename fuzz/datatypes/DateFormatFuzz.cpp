// A format and a text after a line feed: what the parser returns lies within the text, and the characters
// before it read alone give the same fields.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "datatypes/DataTypes.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string input(reinterpret_cast<const char*>(data), size);
    const size_t line = input.find('\n');
    const std::string format = input.substr(0, line);
    const std::string text = line == std::string::npos ? "" : input.c_str() + line + 1;
    tm time;
    const char* rest = DataTypes::strptime(text.c_str(), format.c_str(), &time);
    if (rest == nullptr) return 0;
    if (rest < text.c_str() || rest > text.c_str() + text.size()) std::abort();
    if (time.tm_mon < 0 || time.tm_mon > 11 || time.tm_hour < 0 || time.tm_hour > 23) std::abort();
    DataTypes::tm2sec(&time);

    const std::string used(text.c_str(), rest);
    tm again;
    const char* end = DataTypes::strptime(used.c_str(), format.c_str(), &again);
    if (end != used.c_str() + used.size() || std::memcmp(&again, &time, sizeof time) != 0) std::abort();
    return 0;
}
