// Every key that a configuration may have.
#pragma once

#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "host/configuration/Settings.h"

namespace host {

// A text goes on in modified UTF-8, a plain text as it is. A path of the file that has a '/' counts from its
// folder, the name of a file always does, also behind "sqlite:"; a list of paths may also be one text with
// ':' between them.
enum class ValueKind {
    kText,
    kPlainText,
    kPath,
    kFile,
    kDatabase,
    kChoice,
    kInteger,
    kFlag,
    kLogLevel,
    kTexts,
    kPaths,
    kColumns
};

// One of the words that a value may be.
struct Choice {
    const char* word;
    void (*choose)(Settings& settings);
};

struct ConfigurationKey {
    template <typename Value>
    using Place = Value& (*)(Settings& settings);

    const char* section;
    const char* name;
    ValueKind kind;
    // Where the value goes; nowhere: to the adapter's parameters, or the kind alone says where.
    std::variant<std::monostate, Place<std::string>, Place<std::vector<std::string>>, Place<std::int64_t>,
                 Place<bool>>
        place = {};
    std::int64_t least = 1;  // of an integer with a place
    std::int64_t most = std::numeric_limits<std::int32_t>::max();
    std::span<const Choice> choices = {};
};

// Null: there is no such key.
const ConfigurationKey* findKey(std::string_view section, std::string_view name);

// Whether its values are texts.
bool isText(const ConfigurationKey& key);

bool isSection(std::string_view name);

// The known key, as "section.name", that is spelled most like this one.
std::string nearestKey(std::string_view section, std::string_view name);
std::string nearestSection(std::string_view name);

// The word of the list that is spelled most like this one.
std::string nearestColumnKey(std::string_view name);

}  // namespace host
