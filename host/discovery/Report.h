// A proposal as text in UTF-8.
#pragma once

#include <string>
#include <vector>

#include "host/discovery/Explanation.h"
#include "host/discovery/Proposal.h"

namespace host {

// What there is to write; `explanations` is empty, or one for each of the discovery's columns.
struct Findings {
    const Discovery& discovery;
    const Proposal& proposal;
    const std::vector<Explanation>& explanations;
    size_t samples;                    // how many to show
    std::vector<std::string> remarks;  // sentences on the whole, with the explanations
};

// Columns, types and samples as the entry points answered them, aligned for people.
std::string discoveryTable(const Findings& findings);
// The same as one JSON object.
std::string discoveryJson(const Findings& findings);
// The section [stream] to paste into a configuration, and what [connection] needs besides.
std::string discoveryToml(const Findings& findings);

}  // namespace host
