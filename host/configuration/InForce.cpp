#include "host/configuration/InForce.h"

#include <algorithm>
#include <limits>

namespace host {

std::int64_t settleAfter(const Settings& settings) {
    constexpr std::int64_t kUncommitted = 100;  // as many as the connector acknowledges at a time of itself
    constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
    const bool isBatched = isDurable(settings) || hasSink(settings);
    const std::int64_t size = batchSizeOf(settings);
    if (isBatched && size > 0) return std::min(size, kMost);
    return isDurable(settings) && !hasSink(settings) ? 1 : kUncommitted;
}

std::vector<std::string> connectorOptions(const Settings& settings) {
    std::vector<std::string> options;
    if (!settings.serverSettles) {
        options.emplace_back("-Dkel.jms.settle=host");
        if (hasSink(settings)) options.emplace_back("-Dkel.jms.transacted=true");
        options.push_back("-Dkel.jms.settleAfter=" + std::to_string(settleAfter(settings)));
        options.push_back("-Dkel.jms.settleMillis=" + std::to_string(settings.sink.commitMillis));
    }
    if (!settings.selector.empty()) options.push_back("-Dkel.jms.selector=" + settings.selector);
    return options;
}

std::string urlInForce(const Settings& settings) { return parameterOf(settings, params::kJndiUrl); }

Parameters connectionInForce(const Settings& settings) {
    Parameters connection = settings.connection;
    if (std::string url = urlInForce(settings); !url.empty())
        connection.insert_or_assign(params::kJndiUrl, std::move(url));
    return connection;
}

}  // namespace host
