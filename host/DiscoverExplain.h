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
    size_t values = 0;                                 // how many samples have a value, be it a blank one
    std::vector<std::pair<std::string, size_t>> fits;  // candidate type, how many of the values it can read
    std::vector<std::string> warnings;
};

// One explanation for each column. The `messages` are the samples of XML and FIX as `peek` saw them: they
// tell a blank value, which is a string, from none at all, which has no say. When they are not the samples
// (of a topic they are later ones), the column's type tells which it was, as far as it can, and a warning
// says so. Throws Failure when the library comes to another type than the entry points answered.
std::vector<Explanation> explain(const Discovery& discovery, const Settings& settings,
                                 const std::vector<PeekedMessage>& messages);

}  // namespace host
