#include "host/configuration/InForce.h"

#include <algorithm>
#include <limits>

#include "host/process/Provider.h"

namespace host {

std::int64_t settleAfter(const Settings& settings) {
    constexpr std::int64_t kUncommitted = 100;  // as many as the connector acknowledges at a time of itself
    constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
    const bool isBatched = isDurable(settings) || hasSink(settings);
    const std::int64_t size = batchSizeOf(settings);
    if (isBatched && size > 0) return std::min(size, kMost);
    return isDurable(settings) && !hasSink(settings) ? 1 : kUncommitted;
}

std::vector<std::string> connectorProperties(const Settings& settings) {
    std::vector<std::string> options;
    if (!settings.serverSettles) {
        options.emplace_back("kel.jms.settle=host");
        if (hasSink(settings)) options.emplace_back("kel.jms.transacted=true");
        options.push_back("kel.jms.settleAfter=" + std::to_string(settleAfter(settings)));
        options.push_back("kel.jms.settleMillis=" + std::to_string(settings.sink.commitMillis));
    }
    if (!settings.selector.empty()) options.push_back("kel.jms.selector=" + settings.selector);
    return options;
}

std::string urlInForce(const Settings& settings) {
    std::string url = parameterOf(settings, params::kJndiUrl);
    if (url.empty() || !isAtActiveMq(settings)) return url;
    if (hasSink(settings)) {
        for (const provider::Option& option : provider::optionsForSink())
            url = provider::withOption(url, option.key, option.value);
    } else if (!settings.serverSettles && !isDurable(settings)) {
        // An acknowledgement that nobody answers may be lost with a killed process, and a settling then is
        // none.
        url = provider::withOption(url, provider::kAcknowledgeAsync, "false");
    }
    if (settings.prefetch > 0)
        url = provider::withOption(url, provider::kPrefetch, std::to_string(settings.prefetch));
    return url;
}

Parameters connectionInForce(const Settings& settings) {
    Parameters connection = settings.connection;
    if (std::string url = urlInForce(settings); !url.empty())
        connection.insert_or_assign(params::kJndiUrl, std::move(url));
    return connection;
}

}  // namespace host
