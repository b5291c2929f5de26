#include "host/configuration/ConfigurationKeys.h"

#include <algorithm>
#include <vector>

#include "host/values/Text.h"

namespace host {

namespace {

using enum ValueKind;

constexpr const char* kSections[] = {"stream", "connection", "host"};
constexpr const char* kColumnKeys[] = {"name", "type", "key"};

constexpr ConfigurationKey kKeys[] = {
    {"stream", "name", kText, &Settings::streamName},
    {"stream", "columns", kColumns},

    {"connection", params::kDataFormat, kText},
    {"connection", params::kDelimiter, kText},
    {"connection", params::kFixMessageType, kText},
    {"connection", params::kFixVersion, kText},
    {"connection", params::kConverterClassName, kText},
    {"connection", params::kConverterParam, kText},
    {"connection", params::kConnectionFactory, kText},
    {"connection", params::kJndiContextFactory, kText},
    {"connection", params::kJndiUrl, kText},
    {"connection", params::kDestinationType, kText},
    {"connection", params::kDestinationName, kText},
    {"connection", params::kSubscriptionMode, kText},
    {"connection", params::kClientId, kText},
    {"connection", params::kSubscriptionName, kText},
    {"connection", params::kBatchSize, kInteger},
    {"connection", params::kExpectStreamNameOpcode, kFlag},
    {"connection", params::kMatchStreamName, kFlag},
    {"connection", params::kTimeFormat, kText},
    {"connection", params::kDateFormat, kText},
    {"connection", params::kTimestampFormat, kText},

    {"host", "classPath", kPaths, nullptr, &Settings::classPath},
    {"host", "addClassPath", kPaths, nullptr, &Settings::addClassPath},
    {"host", "jvmOptions", kTexts, nullptr, &Settings::jvmOptions},
    {"host", "plugin", kPath, &Settings::plugin},
    {"host", "logLevel", kLogLevel},
};

// How many letters must be changed, added, removed or exchanged with their neighbour to make one word of the
// other; case does not count, nor what stands where no known word does any more.
size_t distance(std::string_view one, std::string_view other) {
    constexpr size_t kLongest = 100;
    other = other.substr(0, kLongest);
    const auto isSame = [](char a, char b) { return lowerCase(a) == lowerCase(b); };
    std::vector<std::vector<size_t>> table(one.size() + 1, std::vector<size_t>(other.size() + 1));
    for (size_t i = 0; i <= one.size(); ++i) {
        for (size_t j = 0; j <= other.size(); ++j) {
            size_t& least = table[i][j];
            least = std::max(i, j);
            if (i == 0 || j == 0) continue;
            const size_t changed = table[i - 1][j - 1] + (isSame(one[i - 1], other[j - 1]) ? 0 : 1);
            least = std::min({table[i - 1][j] + 1, table[i][j - 1] + 1, changed});
            if (i > 1 && j > 1 && isSame(one[i - 1], other[j - 2]) && isSame(one[i - 2], other[j - 1]))
                least = std::min(least, table[i - 2][j - 2] + 1);
        }
    }
    return table.back().back();
}

template <typename Words>
std::string nearest(const Words& words, std::string_view name) {
    return *std::min_element(std::begin(words), std::end(words), [&](const char* one, const char* other) {
        return distance(one, name) < distance(other, name);
    });
}

}  // namespace

const ConfigurationKey* findKey(std::string_view section, std::string_view name) {
    for (const ConfigurationKey& key : kKeys) {
        if (section == key.section && name == key.name) return &key;
    }
    return nullptr;
}

bool isSection(std::string_view name) {
    return std::find(std::begin(kSections), std::end(kSections), name) != std::end(kSections);
}

std::string nearestKey(std::string_view section, std::string_view name) {
    const auto farness = [&](const ConfigurationKey& key) {
        return distance(key.name, name) + (section == key.section ? 0 : 1);
    };
    const auto* key =
        std::min_element(std::begin(kKeys), std::end(kKeys),
                         [&](const auto& one, const auto& other) { return farness(one) < farness(other); });
    return std::string(key->section) + '.' + key->name;
}

std::string nearestSection(std::string_view name) { return nearest(kSections, name); }
std::string nearestColumnKey(std::string_view name) { return nearest(kColumnKeys, name); }

}  // namespace host
