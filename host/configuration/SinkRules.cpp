#include "host/configuration/SinkRules.h"

#include <algorithm>
#include <charconv>
#include <map>

#include "host/configuration/DatabaseUrls.h"
#include "host/configuration/InForce.h"
#include "host/process/Provider.h"
#include "host/values/ModifiedUtf8.h"
#include "host/values/Text.h"

namespace host {

namespace {

constexpr const char* kOwnTables[] = {"kel_ledger", "kel_rejected"};
constexpr const char* kOwnColumns[] = {"kel_op", "kel_seq", "kel_message_id",
                                       "kel_at"};  // of an append table

// The names in the database, by its own rules.
class NameCheck {
public:
    NameCheck(const Settings& settings, const DatabaseKind& kind, CheckResult& result)
        : settings_(settings), kind_(kind), result_(result) {}

    void run() {
        const SinkSettings& sink = settings_.sink;
        if (kind_.hasSchemas) name("sink.schema is ", sink.schema);
        name("sink.table is ", sink.table);
        if (isOneOf(kOwnTables, sink.table))
            problem("sink.table is " + inQuotes(sink.table) +
                    ", a table of the sink's own; it must be another.");
        std::map<std::string, std::string> seen;
        for (const Column& column : streamColumns(settings_)) {
            const std::string text = toUtf8(column.name);
            name("stream.columns has ", text);
            if (sink.mode == SinkMode::kAppend && isOneOf(kOwnColumns, text))
                problem("stream.columns has " + inQuotes(text) +
                        ", a column of the sink's own where mode = \"append\"; it needs another name.");
            const auto [other, isNew] = seen.emplace(folded(text), text);
            if (!isNew && other->second != text)
                problem("stream.columns has " + inQuotes(other->second) + " and " + inQuotes(text) +
                        ", which are one name to " + kind_.name + "; every name must be different there.");
        }
    }

private:
    std::string folded(const std::string& name) const { return kind_.foldsCase ? lowerCase(name) : name; }

    template <typename Names>
    bool isOneOf(const Names& names, const std::string& text) const {
        return std::find(std::begin(names), std::end(names), folded(text)) != std::end(names);
    }

    void name(const std::string& what, const std::string& text) {
        if (text.find('\0') != std::string::npos)
            problem(what + inQuotes(text) + "; a name in a database has no U+0000.");
        if (kind_.longestName > 0 && text.size() > kind_.longestName)
            problem(what + inQuotes(text) + ", " + std::to_string(text.size()) + " bytes, of which " +
                    kind_.name + " would keep " + std::to_string(kind_.longestName) +
                    "; it must be no longer than that.");
    }

    void problem(std::string sentence) { result_.problems.push_back(std::move(sentence)); }

    const Settings& settings_;
    const DatabaseKind& kind_;
    CheckResult& result_;
};

void checkUrl(const Settings& settings, CheckResult& result) {
    const DatabaseKind* kind = databaseOf(settings.sink.url);
    if (kind != nullptr && settings.sink.url.size() > kind->scheme.size()) {
        NameCheck(settings, *kind, result).run();
        return;
    }
    std::string forms;
    for (const DatabaseKind& one : kDatabases) addToList(forms, one.form);
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
