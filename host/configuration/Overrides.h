// Values from the command line, in place of the file's.
#pragma once

#include <toml++/toml.h>

#include <string>

#include "host/configuration/Problems.h"

namespace host {

// Puts "section.name=value" into the document, as a value without a place in its source.
void applyOverride(const std::string& override, toml::table& document, Problems& problems);

}  // namespace host
