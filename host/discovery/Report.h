// A proposal as text in UTF-8.
#pragma once

#include <span>
#include <string>
#include <string_view>
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

struct ReportForm {
    const char* name;
    const char* help;
    std::string (*write)(const Findings& findings);
};

// The first is the one without a choice.
std::span<const ReportForm> discoveryForms();

// The findings in the form of that name, which is one of them.
std::string writeReport(std::string_view form, const Findings& findings);

}  // namespace host
