#include "datatypes/FourDigits.h"

#include <cstddef>

namespace PlixTypes {

constinit const std::array<char[4], 10000> four2ascii = [] {
    std::array<char[4], 10000> table{};
    for (size_t i = 0; i < table.size(); ++i) {
        size_t rest = i;
        for (int at = 3; at >= 0; --at, rest /= 10) table[i][at] = static_cast<char>('0' + rest % 10);
    }
    return table;
}();

}  // namespace PlixTypes
