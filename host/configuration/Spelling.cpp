#include "host/configuration/Spelling.h"

#include <vector>

#include "host/values/Text.h"

namespace host {

std::size_t distance(std::string_view one, std::string_view other) {
    constexpr size_t kLongest = 100;
    other = other.substr(0, kLongest);
    const auto isSame = [](char a, char b) { return lowerCase(a) == lowerCase(b); };
    std::vector<std::vector<size_t>> table(one.size() + 1, std::vector<size_t>(other.size() + 1));
    for (size_t i = 0; i <= one.size(); ++i) {
        for (size_t j = 0; j <= other.size(); ++j) {
            size_t& least = table[i][j];
            least = std::max(i, j);
            if (i == 0 || j == 0) continue;
            const size_t changed = table[i - 1][j - 1] + (isSame(one[i - 1], other[j - 1]) ? 0 : 1);
            least = std::min({table[i - 1][j] + 1, table[i][j - 1] + 1, changed});
            if (i > 1 && j > 1 && isSame(one[i - 1], other[j - 2]) && isSame(one[i - 2], other[j - 1]))
                least = std::min(least, table[i - 2][j - 2] + 1);
        }
    }
    return table.back().back();
}

}  // namespace host
