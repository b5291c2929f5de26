// Every key that a configuration may have.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/configuration/ConfigurationFile.h"

namespace host {

// A path of the file counts from its folder; a list of paths may also be one text with ':' between them.
enum class ValueKind { kText, kInteger, kFlag, kLogLevel, kPath, kTexts, kPaths, kColumns };

struct ConfigurationKey {
    const char* section;
    const char* name;
    ValueKind kind;
    // Where the value goes; null: to the adapter's parameters, or the kind alone says where.
    std::string Settings::*text = nullptr;
    std::vector<std::string> Settings::*texts = nullptr;
};

// Null: there is no such key.
const ConfigurationKey* findKey(std::string_view section, std::string_view name);

bool isSection(std::string_view name);

// The known key, as "section.name", that is spelled most like this one.
std::string nearestKey(std::string_view section, std::string_view name);
std::string nearestSection(std::string_view name);

// The word of the list that is spelled most like this one.
std::string nearestColumnKey(std::string_view name);

}  // namespace host
