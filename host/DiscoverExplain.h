// How discovery came to a column's type, computed again with the data type library.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "host/DiscoverProposal.h"

namespace host {

// Texts as the adapter's, in modified UTF-8.
struct Explanation {
    size_t sample = 0;  // the one whose value decided the type, counted from 1
    std::string value;
    std::string rule;                                  // what made it so
    size_t values = 0;                                 // how many samples have the column
    std::vector<std::pair<std::string, size_t>> fits;  // candidate type, how many of the values it can read
    std::vector<std::string> warnings;
};

// One explanation for each column. Throws Failure when the library comes to another type than the entry
// points answered.
std::vector<Explanation> explain(const Discovery& discovery, const Settings& settings);

}  // namespace host
