#include "host/configuration/Rules.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdint>
#include <fstream>
#include <initializer_list>
#include <limits>
#include <set>

#include "host/connection/LoadedAdapter.h"
#include "host/connection/Plugin.h"
#include "host/process/ClassPath.h"
#include "host/process/Console.h"
#include "host/process/Failure.h"
#include "host/process/Installation.h"
#include "host/process/Output.h"
#include "host/values/ModifiedUtf8.h"
#include "host/values/Text.h"
#include "host/values/ValueTyping.h"

namespace host {

namespace {

// Parameters that are read for one kind of connection only.
struct UsedFor {
    const char* name;
    const char* by;  // the parameter that says which kind it is
    std::initializer_list<std::string_view> kinds;
    const char* standard = nullptr;  // what the host hands in of itself
};
const UsedFor kUsedFor[] = {
    {"delimiter", "dataFormat", {"CSV"}},
    {"fixMessageType", "dataFormat", {"FIX"}},
    {"fixVersion", "dataFormat", {"FIX"}},
    {"converterClassName", "dataFormat", {"CUSTOM"}},
    {"converterParam", "dataFormat", {"CUSTOM"}},
    {"expectStreamNameOpcode", "dataFormat", {"CSV", "OBJECTARRAY"}},
    {"matchStreamName", "dataFormat", {"XML"}},
    {"timeFormat", "dataFormat", {"CSV", "XML", "FIX"}, kDefaultTimeFormat},
    {"dateFormat", "dataFormat", {"CSV", "XML", "FIX"}, kDefaultDateFormat},
    {"timestampFormat", "dataFormat", {"CSV", "XML", "FIX"}, kDefaultDateFormat},
    {"clientID", "subscriptionMode", {"DURABLE"}},
    {"subscriptionName", "subscriptionMode", {"DURABLE"}},
    {"batchsize", "subscriptionMode", {"DURABLE"}},
};

// The connector's limits, as it reads them.
constexpr const char* kLimits[] = {"receiveTimeoutMillis", "connectTimeoutMillis", "clientIdWaitMillis",
                                   "remindMillis",         "maxMessageBytes",      "maxElements",
                                   "browseLimit",          "browseMillis"};
constexpr std::string_view kLimitOption = "-Dkel.jms.";

bool isLimit(std::string_view text) {
    std::int32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() && value >= 1;
}

class Checker {
public:
    explicit Checker(const Settings& settings) : settings_(settings) {}

    CheckResult result() {
        oneOf("dataFormat", {"CSV", "XML", "FIX", "OBJECTARRAY", "CUSTOM"}, false);
        if (text("dataFormat") == "CSV") needed("delimiter", "the text between two values, such as \",\"");
        if (text("dataFormat") == "CUSTOM")
            needed("converterClassName", "the full name of the converter's Java class");
        if (text("dataFormat") == "FIX") fix();
        needed("connectionFactory", "the JNDI name of the provider's factory, such as \"ConnectionFactory\"");
        needed("jndiContextFactory",
               "the provider's Java class for JNDI, such as "
               "\"org.apache.activemq.jndi.ActiveMQInitialContextFactory\"");
        needed("jndiURL", "the provider's address, such as \"tcp://localhost:61616\"");
        needed("destinationName", "the name of the queue or topic");
        atProvider("connectionFactory");
        atProvider("destinationName");
        // The adapter takes any other value for a topic, and for a non-durable subscription.
        oneOf("destinationType", {"QUEUE", "TOPIC"}, false);
        oneOf("subscriptionMode", {"NONDURABLE", "DURABLE"}, true);
        if (text("subscriptionMode") == "DURABLE") durable();
        inJvmBroker();
        for (const std::string& option : settings_.jvmOptions) limit(option);
        for (const UsedFor& use : kUsedFor) unused(use);
        return std::move(result_);
    }

private:
    // As it stands in the file; "" when it does not.
    std::string text(const char* name) const { return toUtf8(parameterOf(settings_, name)); }

    void problem(const char* name, const std::string& allowed) {
        if (settings_.malformed.contains("connection." + std::string(name))) return;  // that is the problem
        const bool isThere = settings_.connection.contains(name);
        result_.problems.push_back("connection." + std::string(name) +
                                   (isThere ? " is " + inQuotes(text(name)) : " is missing") + "; " +
                                   allowed + ".");
    }

    void needed(const char* name, const std::string& what) {
        if (text(name).empty()) problem(name, "it must be " + what);
    }

    // Such a name would be looked up past the provider; the connector refuses it.
    void atProvider(const char* name) {
        constexpr std::string_view kSchemes[] = {"ldap", "ldaps",    "rmi",       "dns",
                                                 "iiop", "iiopname", "corbaname", "corbaloc"};
        std::string scheme = text(name).substr(0, text(name).find(':'));
        for (char& c : scheme) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        const bool isRemote =
            std::find(std::begin(kSchemes), std::end(kSchemes), scheme) != std::end(kSchemes);
        if (isRemote && text(name).find(':') != std::string::npos)
            problem(name, "it must be a name at the provider itself, not of another naming service");
    }

    void oneOf(const char* name, const std::vector<std::string>& values, bool mayBeMissing) {
        if (std::find(values.begin(), values.end(), text(name)) != values.end()) return;
        if (mayBeMissing && text(name).empty()) return;
        std::string list;
        for (const std::string& value : values) addToList(list, inQuotes(value));
        problem(name, "allowed are " + list);
    }

    void fix() {
        needed("fixMessageType", "the type of the messages wanted, such as \"D\": all others are skipped");
        const std::string dictionary = dictionaryFile(text("fixVersion")).string();
        std::ifstream in(dictionary);
        if (!in) {
            problem("fixVersion", "its dictionary " + dictionary + " cannot be read");
            return;
        }
        std::set<std::string> fields;
        for (std::string line; std::getline(in, line);) fields.insert(line.substr(line.find('=') + 1));
        for (const Column& column : settings_.columns) {
            const std::string name = toUtf8(column.name);
            if (!fields.contains(name))
                result_.problems.push_back("stream.columns has " + inQuotes(name) +
                                           "; it must be a field named in " + dictionary +
                                           ", else it is never filled.");
        }
    }

    void durable() {
        if (text("destinationType") == "QUEUE")
            problem("subscriptionMode", "a queue has no durable subscriptions, only a topic has");
        needed("clientID", "a name that no other connection to the provider uses");
        needed("subscriptionName", "the subscription's name");
        const std::string batch = text("batchsize");
        if (batch.starts_with('-'))
            problem("batchsize", "it must be the number of messages a commit, from 1");
        if (text("dataFormat") == "FIX" && batchSize() > 1) uncommittedFix();
        redelivery();
    }

    std::int64_t batchSize() const {
        const std::string batch = text("batchsize");
        std::int64_t size = 0;
        std::from_chars(batch.data(), batch.data() + batch.size(), size);
        return size;
    }

    void uncommittedFix() {
        result_.notes.push_back("connection.batchsize is " + text("batchsize") +
                                "; messages of other types than connection.fixMessageType are counted too, "
                                "and a commit is made only when "
                                "a row comes just as the count is a multiple of it, which may be seldom or "
                                "never; 1 commits every row.");
    }

    void redelivery() {
        constexpr char kUnlimited[] = "jms.redeliveryPolicy.maximumRedeliveries=-1";
        if (!text("jndiContextFactory").starts_with("org.apache.activemq") ||
            text("jndiURL").find(kUnlimited) != std::string::npos)
            return;
        result_.notes.push_back(
            "connection.jndiURL does not say " + std::string(kUnlimited) +
            "; without it ActiveMQ moves messages to its dead-letter queue after six crashes or stops before "
            "their commit.");
    }

    void inJvmBroker() {
        const std::string url = text("jndiURL");
        if (isInJvmBroker(url) && url.find("broker.persistent=false") == std::string::npos && !hasStore())
            problem("jndiURL",
                    "a broker inside the process keeps its messages in files, for which jars are "
                    "missing, unless the URL says ?broker.persistent=false&broker.useJmx=false");
    }

    // Whose jars a class path of its own has, nobody knows.
    bool hasStore() const {
        const std::vector<std::string>& jars = settings_.addClassPath;
        const auto isStore = [](const std::string& jar) { return jar.find("kahadb") != std::string::npos; };
        return !settings_.classPath.empty() || std::any_of(jars.begin(), jars.end(), isStore);
    }

    void limit(const std::string& option) {
        if (!option.starts_with(kLimitOption)) return;
        const size_t equals = std::min(option.find('='), option.size());
        const std::string name = option.substr(kLimitOption.size(), equals - kLimitOption.size());
        const std::string value = option.substr(std::min(equals + 1, option.size()));
        if (name == "trustObjectMessages") return;
        std::string known;
        for (const char* limit : kLimits) addToList(known, limit);
        if (std::find(std::begin(kLimits), std::end(kLimits), name) == std::end(kLimits)) {
            result_.problems.push_back(
                "host.jvmOptions has " + inQuotes(option) + ", which the connector does not know; after " +
                std::string(kLimitOption) + " it knows " + known + ", trustObjectMessages.");
        } else if (!isLimit(value)) {
            result_.problems.push_back("host.jvmOptions has " + inQuotes(option) +
                                       "; the value must be an integer from 1 to " +
                                       std::to_string(std::numeric_limits<std::int32_t>::max()) + ".");
        }
    }

    void unused(const UsedFor& use) {
        const std::string kind = text(use.by);
        const bool isUsed = std::find(use.kinds.begin(), use.kinds.end(), kind) != use.kinds.end();
        const bool isGiven = settings_.connection.contains(use.name) &&
                             (use.standard == nullptr || text(use.name) != use.standard);
        if (isUsed || !isGiven) return;
        std::string kinds;
        for (const std::string_view one : use.kinds) addToList(kinds, inQuotes(one), " or ");
        result_.notes.push_back("connection." + std::string(use.name) + " is not read unless connection." +
                                use.by + " is " + kinds + ".");
    }

    const Settings& settings_;
    CheckResult result_;
};

// Everything that is wrong, each with its place; notes come along.
std::optional<Settings> examined(const std::string& file, const std::vector<std::string>& overrides,
                                 StreamSection stream, CheckResult& result) {
    std::optional<Settings> settings = readSettings(file, overrides, result.problems, stream);
    if (!settings) return settings;
    const std::string place = file + ": ", notePlace = place + "note: ";
    const CheckResult found = checkSettings(*settings);
    for (const std::string& problem : found.problems) result.problems.push_back(place + problem);
    for (const std::string& note : found.notes) result.notes.push_back(notePlace + note);
    try {
        classPath(*settings);
    } catch (const Failure& failure) {
        result.problems.push_back(place + failure.what());
    }
    return settings;
}

void refuseInJvmBroker(const Settings& settings, const std::string& instead) {
    const auto url = settings.connection.find("jndiURL");
    if (url != settings.connection.end() && isInJvmBroker(url->second))
        throw Failure("connection.jndiURL is " + inQuotes(url->second) +
                          ", a broker inside the process that uses it, which no other process sees; use " +
                          instead + " the URL of a broker of its own, such as tcp://localhost:61616.",
                      kBadConfiguration);
}

}  // namespace

CheckResult checkSettings(const Settings& settings) { return Checker(settings).result(); }

bool isInJvmBroker(std::string_view url) {
    constexpr std::string_view kScheme = "vm:";
    constexpr std::string_view kBeforeUrl =
        "(,: ";  // as in failover:(tcp://a,vm://b); a host may be named vm
    for (size_t at = url.find(kScheme); at != std::string_view::npos; at = url.find(kScheme, at + 1)) {
        if (at == 0 || kBeforeUrl.find(url[at - 1]) != std::string_view::npos) return true;
    }
    return false;
}

Settings soundSettings(const std::string& file, const std::vector<std::string>& overrides,
                       StreamSection stream, const char* insteadOfInJvmBroker) {
    CheckResult result;
    std::optional<Settings> settings = examined(file, overrides, stream, result);
    // Ahead of the rest, which would tell how to set up such a broker.
    if (settings && insteadOfInJvmBroker != nullptr) refuseInJvmBroker(*settings, insteadOfInJvmBroker);
    const size_t count = result.problems.size();
    for (const std::string& problem : result.problems) say(problem);
    if (count > 0)
        throw Failure(std::to_string(count) + (count == 1 ? " problem" : " problems") +
                          " in the configuration; nothing was started.",
                      kBadConfiguration);
    return std::move(*settings);
}

int checkConfiguration(const std::string& file, const std::vector<std::string>& overrides) {
    Output output;
    CheckResult result;
    if (const auto settings = examined(file, overrides, StreamSection::kNeeded, result)) {
        try {
            const Plugin plugin(pluginFor(*settings, ""));
        } catch (const Failure& failure) {
            result.problems.push_back(file + ": host.plugin: " + failure.what());
        }
    }
    std::vector<std::string> lines = result.problems;
    if (lines.empty()) lines.push_back(file + ": no problems");
    lines.insert(lines.end(), result.notes.begin(), result.notes.end());
    std::string text;
    for (const std::string& line : lines) text += shown(line) + '\n';
    output.write(text);
    return result.problems.empty() ? kDone : kBadConfiguration;
}

}  // namespace host
