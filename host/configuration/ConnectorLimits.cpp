#include "host/configuration/ConnectorLimits.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <string_view>

#include "host/values/Text.h"

namespace host {

namespace {

// As the connector reads them.
constexpr const char* kLimits[] = {"receiveTimeoutMillis", "connectTimeoutMillis", "clientIdWaitMillis",
                                   "remindMillis",         "maxMessageBytes",      "maxElements",
                                   "browseLimit",          "browseMillis"};
constexpr char kFlag[] = "trustObjectMessages";  // takes any value
// What the host says by such options of its own, and the key that decides on it.
struct OwnOption {
    std::string_view name;
    const char* key;
};
constexpr OwnOption kOwn[] = {
    {"settle", "host.settle"},
    {"transacted", "the section [sink]"},
    {"settleAfter", "connection.batchsize"},
    {"settleMillis", "sink.commitMillis"},
    {"selector", "host.selector"},
};
constexpr std::string_view kPrefix = "-Dkel.jms.";

bool isLimit(std::string_view text) {
    std::int32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() && value >= 1;
}

std::string knownNames() {
    std::string names;
    for (const char* limit : kLimits) addToList(names, limit);
    addToList(names, kFlag);
    return names;
}

}  // namespace

std::string faultOfLimit(const std::string& jvmOption) {
    if (!jvmOption.starts_with(kPrefix)) return {};
    const size_t equals = std::min(jvmOption.find('='), jvmOption.size());
    const std::string name = jvmOption.substr(kPrefix.size(), equals - kPrefix.size());
    const std::string value = jvmOption.substr(std::min(equals + 1, jvmOption.size()));
    if (name == kFlag) return {};
    for (const OwnOption& own : kOwn) {
        if (name == own.name)
            return inQuotes(jvmOption) + ", which " + own.key + " decides on; it must be absent.";
    }
    if (std::find(std::begin(kLimits), std::end(kLimits), name) == std::end(kLimits))
        return inQuotes(jvmOption) + ", which the connector does not know; after " + std::string(kPrefix) +
               " it knows " + knownNames() + ".";
    if (isLimit(value)) return {};
    return inQuotes(jvmOption) + "; the value must be an integer from 1 to " +
           std::to_string(std::numeric_limits<std::int32_t>::max()) + ".";
}

}  // namespace host
