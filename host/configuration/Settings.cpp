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

bool readsDatesAsSeconds(const Settings& settings) {
    const std::string format = parameterOf(settings, "dataFormat");
    return format == "OBJECTARRAY" || format == "CUSTOM";
}

TemporalFormats discoveryFormats(const Settings& settings) {
    if (readsDatesAsSeconds(settings)) return {kSecondsFormat, kSecondsFormat, kSecondsFormat};
    return {parameterOf(settings, "timeFormat"), parameterOf(settings, "dateFormat"),
            parameterOf(settings, "timestampFormat")};
}

}  // namespace host
