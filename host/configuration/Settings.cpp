#include "host/configuration/Settings.h"

#include <cstdlib>

namespace host {

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
