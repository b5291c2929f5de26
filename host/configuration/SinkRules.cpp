#include "host/configuration/SinkRules.h"

#include <charconv>
#include <utility>

#include "host/configuration/InForce.h"
#include "host/database/Names.h"
#include "host/process/Provider.h"
#include "host/values/Text.h"

namespace host {

namespace {

void checkUrl(const Settings& settings, CheckResult& result) {
    const DatabaseScheme* scheme = schemeOf(settings.sink.url);
    if (scheme != nullptr && settings.sink.url.size() > scheme->begin.size()) {
        for (std::string& problem : nameProblems(scheme->kind, settings.sink, streamColumns(settings)))
            result.problems.push_back(std::move(problem));
        return;
    }
    std::string forms;
    for (const DatabaseRules& one : kDatabases) addToList(forms, one.form);
    result.problems.push_back("sink.url is " + inQuotes(settings.sink.url) + "; allowed are " + forms + ".");
}

// How many messages of a queue the client of ActiveMQ has sent ahead.
std::int64_t queuePrefetch(const Settings& settings) {
    std::int64_t prefetch = 1000;  // the client's own
    for (const char* key : {"all=", "queuePrefetch="}) {
        const std::string option = provider::optionBeginningWith(
            urlInForce(settings), provider::kPrefetchOptions + std::string(key));
        if (option.empty()) continue;
        const size_t value = option.find('=') + 1;
        std::from_chars(option.data() + value, option.data() + option.size(), prefetch);
    }
    return prefetch;
}

// The broker has as many of a queue out unsettled; the client tells it of half a prefetch taken, which then
// makes room for more.
void noteBatch(const Settings& settings, CheckResult& result) {
    constexpr std::int64_t kMost = 200;
    if (!isQueue(settings) || !isAtActiveMq(settings) || batchSizeOf(settings) <= kMost) return;
    if (queuePrefetch(settings) <= 2 * kMost) return;
    result.notes.push_back(
        "connection.batchsize is " + std::to_string(batchSizeOf(settings)) +
        "; with a prefetch above 400 a broker of ActiveMQ hands out 200 messages of a queue "
        "and waits for their commit, which comes after sink.commitMillis; host.prefetch = "
        "400 lets larger batches through.");
}

void noteLosses(const Settings& settings, CheckResult& result) {
    if (!isQueue(settings) && !isDurable(settings))
        result.notes.emplace_back(
            "connection.subscriptionMode is not \"DURABLE\"; each message of the topic comes into the table "
            "once, but only those that are sent while this host listens.");
    if (isAtActiveMq(settings) && provider::reconnectsByItself(parameterOf(settings, params::kJndiUrl)))
        result.notes.emplace_back(
            "connection.jndiURL does not say maxReconnectAttempts=0 behind failover:; without it the client "
            "connects again by itself, in the middle of a batch, and the connector is not told.");
}

}  // namespace

void checkSink(const Settings& settings, CheckResult& result) {
    checkUrl(settings, result);
    if (settings.sink.mode == SinkMode::kApply && !hasKeys(settings))
        result.problems.emplace_back("sink.mode is \"apply\", which needs key columns; the stream has none.");
    if (!settings.rejects.empty())
        result.problems.emplace_back(
            "host.rejects is there beside a sink, which keeps rejects in its table kel_rejected; only one of "
            "them may be.");
    noteBatch(settings, result);
    noteLosses(settings, result);
}

}  // namespace host
