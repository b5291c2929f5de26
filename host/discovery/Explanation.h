// How discovery came to a column's type, computed again with the data type library.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "host/discovery/Proposal.h"

namespace host {

// Texts as the adapter's, in modified UTF-8.
struct Explanation {
    size_t sample = 0;  // the one whose value decided the type, counted from 1
    std::string value;
    std::string rule;                                  // what made it so
    size_t values = 0;                                 // how many samples have a value, be it a blank one
    std::vector<std::pair<std::string, size_t>> fits;  // candidate type, how many of the values it can read
    std::vector<std::string> warnings;
};

// One explanation for each column. Where XML and FIX samples hold blank texts, the second look tells a blank
// value, which is a string, from none at all, which has no say. Throws Failure when the library comes to
// another type than the entry points answered.
std::vector<Explanation> explain(const Discovery& discovery, const Settings& settings);

// Whether the second look does not tell that. Then blank texts count as values in columns that these made a
// string, and as none in others.
bool guessesBlanks(const Discovery& discovery, const Settings& settings);

}  // namespace host
