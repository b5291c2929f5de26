// The columns of a configuration file.
#pragma once

#include <toml++/toml.h>

#include <vector>

#include "host/configuration/Problems.h"
#include "host/toolkit/RowType.h"

namespace host {

// stream.columns; what is wrong with one is a problem, and leaves it out where it cannot be a column.
std::vector<Column> readColumns(const toml::node& value, Problems& problems);

}  // namespace host
