// A configuration file in TOML.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/configuration/Settings.h"

namespace host {

// Whether the configuration must name a stream and its columns.
enum class StreamSection { kNeeded, kOptional };

// Reads the file, then the overrides "section.name=value". Every problem found is appended to `problems`,
// one sentence each: where, what was found, what is allowed. Nothing is connected or looked up. None: the
// file cannot be read at all.
std::optional<Settings> readSettings(const std::string& file, const std::vector<std::string>& overrides,
                                     std::vector<std::string>& problems,
                                     StreamSection stream = StreamSection::kNeeded);

}  // namespace host
