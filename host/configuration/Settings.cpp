#include "host/configuration/Settings.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>

#include "host/process/Provider.h"

namespace host {

std::vector<Column> streamColumns(const Settings& settings) {
    std::vector<Column> columns = settings.columns;
    for (const EnvelopeColumn& envelope : settings.envelope)
        columns.insert(columns.begin() + static_cast<std::ptrdiff_t>(envelope.position), envelope.column);
    return columns;
}

bool hasKeys(const Settings& settings) {
    const std::vector<Column> columns = streamColumns(settings);
    return std::any_of(columns.begin(), columns.end(), [](const Column& column) { return column.key; });
}

bool hasSink(const Settings& settings) { return !settings.sink.url.empty(); }

bool isQueue(const Settings& settings) {
    return parameterOf(settings, params::kDestinationType) == jmsin::kQueue;
}

bool isDurable(const Settings& settings) {
    return parameterOf(settings, params::kSubscriptionMode) == jmsin::kDurable;
}

bool isAtActiveMq(const Settings& settings) {
    return provider::isContextFactory(parameterOf(settings, params::kJndiContextFactory));
}

std::int64_t batchSizeOf(const Settings& settings) {
    const std::string text = parameterOf(settings, params::kBatchSize);
    std::int64_t size = 0;
    std::from_chars(text.data(), text.data() + text.size(), size);
    return size;
}

std::string parameterOf(const Settings& settings, const char* name) {
    const auto found = settings.connection.find(name);
    return found != settings.connection.end() ? found->second : std::string();
}

bool flagOf(const Settings& settings, const char* name) {
    return !settings.connection.contains(name) ||
           std::strtoll(parameterOf(settings, name).c_str(), nullptr, 10) != 0;
}

const jmsin::DataFormatInfo* dataFormatOf(const Settings& settings) {
    return jmsin::findDataFormat(parameterOf(settings, params::kDataFormat));
}

bool readsDatesAsSeconds(const Settings& settings) {
    const jmsin::DataFormatInfo* info = dataFormatOf(settings);
    return info != nullptr && info->datesAsSeconds;
}

TemporalFormats discoveryFormats(const Settings& settings) {
    if (readsDatesAsSeconds(settings)) return {kSecondsFormat, kSecondsFormat, kSecondsFormat};
    return {parameterOf(settings, params::kTimeFormat), parameterOf(settings, params::kDateFormat),
            parameterOf(settings, params::kTimestampFormat)};
}

}  // namespace host
