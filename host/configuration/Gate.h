// What every command that reads a configuration asks of it before it starts anything.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/configuration/ConfigurationFile.h"
#include "host/configuration/Rules.h"

namespace host {

// Everything that is seen without connecting, each with its place. None: the file cannot be read at all.
std::optional<Settings> examine(const std::string& file, const std::vector<std::string>& overrides,
                                StreamSection stream, CheckResult& result);

enum class Purpose { kRun, kSend, kDiscover };

// The settings of a file and its overrides in which nothing is wrong, also not for that purpose; else says
// all problems and throws Failure.
Settings soundSettings(const std::string& file, const std::vector<std::string>& overrides, Purpose purpose);

}  // namespace host
