// Which known word somebody meant.
#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>

namespace host {

// How many letters must be changed, added, removed or exchanged with their neighbour to make one word of the
// other; case does not count, nor what stands where no known word does any more.
std::size_t distance(std::string_view one, std::string_view other);

// The entry, of those that there are, whose name is spelled most like this one; `nameOf` gives an entry's.
template <typename Entries, typename NameOf>
const auto& nearest(const Entries& entries, std::string_view name, NameOf nameOf) {
    return *std::min_element(std::begin(entries), std::end(entries), [&](const auto& one, const auto& other) {
        return distance(nameOf(one), name) < distance(nameOf(other), name);
    });
}

}  // namespace host
