// Every key that a configuration may have.
#pragma once

#include <string>
#include <string_view>

namespace host {

enum class ValueKind { kText, kInteger, kFlag, kTexts, kColumns };

struct ConfigurationKey {
    const char* section;
    const char* name;
    ValueKind kind;
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
