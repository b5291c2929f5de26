#include "host/configuration/ConfigurationKeys.h"

#include <algorithm>
#include <functional>

#include "host/configuration/Spelling.h"

namespace host {

namespace {

using enum ValueKind;

constexpr const char* kSections[] = {"stream", "connection", "sink", "host"};
constexpr const char* kColumnKeys[] = {"name", "type", "key", "from"};

template <auto kMember>
auto& own(Settings& settings) {
    return settings.*kMember;
}
template <auto kMember>
auto& ofSink(Settings& settings) {
    return settings.sink.*kMember;
}

constexpr Choice kModes[] = {
    {"apply", [](Settings& settings) { settings.sink.mode = SinkMode::kApply; }},
    {"append", [](Settings& settings) { settings.sink.mode = SinkMode::kAppend; }},
};
constexpr Choice kRejects[] = {
    {"keep", [](Settings& settings) { settings.sink.keepsRejects = true; }},
    {"stop", [](Settings& settings) { settings.sink.keepsRejects = false; }},
};
constexpr Choice kSettlers[] = {
    {"host", [](Settings& settings) { settings.serverSettles = false; }},
    {"server", [](Settings& settings) { settings.serverSettles = true; }},
};

constexpr std::int64_t kDaySeconds = 86'400;
constexpr std::int64_t kTenYearsHours = 87'600;  // a database subtracts it from the time of day
constexpr std::int64_t kMostPrefetch = 32'767;   // the provider's client takes no more

constexpr ConfigurationKey kKeys[] = {
    {"stream", "name", kText, own<&Settings::streamName>},
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

    {"sink", "url", kDatabase, ofSink<&SinkSettings::url>},
    {"sink", "schema", kPlainText, ofSink<&SinkSettings::schema>},
    {"sink", "table", kPlainText, ofSink<&SinkSettings::table>},
    {.section = "sink", .name = "mode", .kind = kChoice, .choices = kModes},
    {"sink", "source", kPlainText, ofSink<&SinkSettings::source>},
    {"sink", "create", kFlag, ofSink<&SinkSettings::create>},
    {"sink", "commitMillis", kInteger, ofSink<&SinkSettings::commitMillis>},
    {.section = "sink", .name = "rejects", .kind = kChoice, .choices = kRejects},
    {"sink", "retrySeconds", kInteger, ofSink<&SinkSettings::retrySeconds>, 0},
    {"sink", "statementTimeoutMillis", kInteger, ofSink<&SinkSettings::statementTimeoutMillis>},
    {"sink", "lockTimeoutMillis", kInteger, ofSink<&SinkSettings::lockTimeoutMillis>},
    {"sink", "ledgerHours", kInteger, ofSink<&SinkSettings::ledgerHours>, 1, kTenYearsHours},
    {"sink", "leaseSeconds", kInteger, ofSink<&SinkSettings::leaseSeconds>, 1, kDaySeconds},

    {"host", "classPath", kPaths, own<&Settings::classPath>},
    {"host", "addClassPath", kPaths, own<&Settings::addClassPath>},
    {"host", "jvmOptions", kTexts, own<&Settings::jvmOptions>},
    {"host", "plugin", kPath, own<&Settings::plugin>},
    {"host", "logLevel", kLogLevel},
    {"host", "selector", kPlainText, own<&Settings::selector>},
    {"host", "prefetch", kInteger, own<&Settings::prefetch>, 1, kMostPrefetch},
    {.section = "host", .name = "settle", .kind = kChoice, .choices = kSettlers},
    {"host", "rejects", kFile, own<&Settings::rejects>},
};

}  // namespace

const ConfigurationKey* findKey(std::string_view section, std::string_view name) {
    for (const ConfigurationKey& key : kKeys) {
        if (section == key.section && name == key.name) return &key;
    }
    return nullptr;
}

bool isText(const ConfigurationKey& key) {
    constexpr ValueKind kKinds[] = {kText, kPlainText, kPath, kFile, kDatabase, kChoice};
    return std::find(std::begin(kKinds), std::end(kKinds), key.kind) != std::end(kKinds);
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

std::string nearestSection(std::string_view name) { return nearest(kSections, name, std::identity()); }
std::string nearestColumnKey(std::string_view name) { return nearest(kColumnKeys, name, std::identity()); }

}  // namespace host
