// The columns of a configuration file.
#pragma once

#include <toml++/toml.h>

#include <vector>

#include "host/configuration/Problems.h"
#include "host/configuration/Settings.h"

namespace host {

// As in Settings.
struct StreamColumns {
    std::vector<Column> own;
    std::vector<EnvelopeColumn> envelope;
};

// stream.columns; what is wrong with one is a problem, and leaves it out where it cannot be a column.
StreamColumns readColumns(const toml::node& value, Problems& problems);

}  // namespace host
