#include "host/configuration/SettlingRules.h"

#include "host/configuration/InForce.h"
#include "host/process/Provider.h"
#include "host/values/ModifiedUtf8.h"
#include "host/values/Text.h"

namespace host {

namespace {

// What only this host can do, for which it must settle the messages itself.
void checkServer(const Settings& settings, CheckResult& result) {
    const std::pair<bool, const char*> needs[] = {
        {hasSink(settings), "the section [sink]"},
        {!settings.envelope.empty(), "columns that say from"},
        {!settings.rejects.empty(), "host.rejects"},
    };
    std::string list;
    for (const auto& [isThere, what] : needs) {
        if (isThere) addToList(list, what, " and ");
    }
    if (settings.serverSettles && !list.empty())
        result.problems.push_back("host.settle is \"server\", which does not go with " + list +
                                  "; it must be \"host\", or absent.");
}

void checkPrefetch(const Settings& settings, CheckResult& result) {
    if (settings.prefetch == 0) return;
    const std::string place = "host.prefetch is " + std::to_string(settings.prefetch);
    const std::string key =
        provider::optionBeginningWith(parameterOf(settings, params::kJndiUrl), provider::kPrefetchOptions);
    if (!isAtActiveMq(settings))
        result.problems.push_back(place +
                                  ", which only a client of ActiveMQ is told; for any other provider "
                                  "it must be absent.");
    if (isAtActiveMq(settings) && !key.empty())
        result.problems.push_back(place + ", and connection.jndiURL says " + key +
                                  "; only one of them may be there.");
}

void checkSelector(const Settings& settings, CheckResult& result) {
    const std::string& selector = settings.selector;
    if (selector.find('\0') != std::string::npos)
        result.problems.push_back("host.selector is " + inQuotes(selector) + "; it must not have U+0000.");
    if (!selector.empty() && isDurable(settings))
        result.notes.emplace_back(
            "host.selector belongs to the durable subscription: when it is changed, the provider makes the "
            "subscription anew, and what waits in it is lost.");
}

void noteUrl(const Settings& settings, CheckResult& result) {
    const std::string url = urlInForce(settings);
    const bool isAskedFor = hasSink(settings) || settings.prefetch > 0;
    if (!isAskedFor || url == parameterOf(settings, params::kJndiUrl)) return;
    result.notes.push_back("connection.jndiURL is used as " + inQuotes(toUtf8(url)) + ", which says what " +
                           (!hasSink(settings)       ? "host.prefetch asks for."
                            : settings.prefetch == 0 ? "the sink needs."
                                                     : "the sink needs and host.prefetch asks for."));
}

}  // namespace

void checkSettling(const Settings& settings, CheckResult& result) {
    checkServer(settings, result);
    checkPrefetch(settings, result);
    checkSelector(settings, result);
    noteUrl(settings, result);
}

}  // namespace host
