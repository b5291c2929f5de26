#include "host/configuration/Rules.h"

#include <algorithm>
#include <set>

#include "fix/DictionaryFile.h"
#include "host/configuration/ConnectorLimits.h"
#include "host/configuration/InForce.h"
#include "host/configuration/SettlingRules.h"
#include "host/configuration/SinkRules.h"
#include "host/process/Installation.h"
#include "host/process/Provider.h"
#include "host/values/ModifiedUtf8.h"
#include "host/values/Text.h"
#include "host/values/ValueTyping.h"

namespace host {

namespace {

using jmsin::DataFormatInfo;

// Parameters that are read for some data formats only.
struct UsedForFormat {
    const char* name;
    bool (*isRead)(const DataFormatInfo& info);
    const char* standard = nullptr;  // what the host hands in of itself
};
template <DataFormat kOnly>
bool isOnly(const DataFormatInfo& info) {
    return info.format == kOnly;
}
bool hasFormats(const DataFormatInfo& info) { return !info.datesAsSeconds; }
constexpr UsedForFormat kUsedForFormat[] = {
    {params::kDelimiter, isOnly<DataFormat::kCsv>},
    {params::kFixMessageType, isOnly<DataFormat::kFix>},
    {params::kFixVersion, isOnly<DataFormat::kFix>},
    {params::kConverterClassName, isOnly<DataFormat::kCustom>},
    {params::kConverterParam, isOnly<DataFormat::kCustom>},
    {params::kExpectStreamNameOpcode,
     [](const auto& info) { return info.prefix == jmsin::Prefix::kAsConfigured; }},
    {params::kMatchStreamName, [](const auto& info) { return info.isByNames; }},
    {params::kTimeFormat, hasFormats, kDefaultTimeFormat},
    {params::kDateFormat, hasFormats, kDefaultDateFormat},
    {params::kTimestampFormat, hasFormats, kDefaultDateFormat},
};

constexpr const char* kUsedForDurable[] = {params::kClientId, params::kSubscriptionName, params::kBatchSize};

class Checker {
public:
    explicit Checker(const Settings& settings) : settings_(settings) {}

    CheckResult result() {
        std::vector<std::string> formats;
        for (const DataFormatInfo& info : jmsin::kDataFormats) formats.emplace_back(info.name);
        oneOf(params::kDataFormat, formats, false);
        if (isFormat(DataFormat::kCsv))
            needed(params::kDelimiter, "the text between two values, such as \",\"");
        if (isFormat(DataFormat::kCustom))
            needed(params::kConverterClassName, "the full name of the converter's Java class");
        if (isFormat(DataFormat::kFix)) fix();
        needed(params::kConnectionFactory,
               "the JNDI name of the provider's factory, such as \"ConnectionFactory\"");
        needed(params::kJndiContextFactory,
               "the provider's Java class for JNDI, such as "
               "\"org.apache.activemq.jndi.ActiveMQInitialContextFactory\"");
        needed(params::kJndiUrl, "the provider's address, such as \"tcp://localhost:61616\"");
        needed(params::kDestinationName, "the name of the queue or topic");
        atProvider(params::kConnectionFactory);
        atProvider(params::kDestinationName);
        // The adapter takes any other value for a topic, and for a non-durable subscription.
        oneOf(params::kDestinationType, {jmsin::kQueue, "TOPIC"}, false);
        oneOf(params::kSubscriptionMode, {jmsin::kNonDurable, jmsin::kDurable}, true);
        if (isDurable(settings_)) durable();
        if (isDurable(settings_) || hasSink(settings_)) batches();
        inJvmBroker();
        for (const std::string& option : settings_.jvmOptions) {
            const std::string fault = faultOfLimit(option);
            if (!fault.empty()) result_.problems.push_back("host.jvmOptions has " + fault);
        }
        for (const UsedForFormat& use : kUsedForFormat) unused(use);
        for (const char* name : kUsedForDurable) {
            const bool isRead =
                isDurable(settings_) || (hasSink(settings_) && std::string_view(name) == params::kBatchSize);
            if (settings_.connection.contains(name) && !isRead)
                unread(name, params::kSubscriptionMode, inQuotes(jmsin::kDurable));
        }
        return std::move(result_);
    }

private:
    // As it stands in the file; "" when it does not.
    std::string text(const char* name) const { return toUtf8(parameterOf(settings_, name)); }

    bool isFormat(DataFormat format) const {
        const DataFormatInfo* info = dataFormatOf(settings_);
        return info != nullptr && info->format == format;
    }

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
        const std::string scheme = lowerCase(text(name).substr(0, text(name).find(':')));
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
        needed(params::kFixMessageType,
               "the type of the messages wanted, such as \"D\": all others are skipped");
        const std::string dictionary = dictionaryFile(text(params::kFixVersion)).string();
        const auto entries = fix::readDictionary(dictionary);
        if (!entries) {
            problem(params::kFixVersion, "its dictionary " + dictionary + " cannot be read");
            return;
        }
        std::set<std::string> fields;
        for (const auto& [tag, name] : *entries) fields.insert(name);
        for (const Column& column : settings_.columns) {
            const std::string name = toUtf8(column.name);
            if (!fields.contains(name))
                result_.problems.push_back("stream.columns has " + inQuotes(name) +
                                           "; it must be a field named in " + dictionary +
                                           ", else every message is refused.");
        }
    }

    void durable() {
        if (text(params::kDestinationType) == jmsin::kQueue)
            problem(params::kSubscriptionMode, "a queue has no durable subscriptions, only a topic has");
        needed(params::kClientId, "a name that no other connection to the provider uses");
        needed(params::kSubscriptionName, "the subscription's name");
    }

    void batches() {
        if (batchSizeOf(settings_) < 0)
            problem(params::kBatchSize, "it must be the number of messages a commit, from 1");
        if (settings_.serverSettles && isFormat(DataFormat::kFix) && batchSizeOf(settings_) > 1)
            uncommittedFix();
        redelivery();
    }

    void uncommittedFix() {
        result_.notes.push_back("connection.batchsize is " + text(params::kBatchSize) +
                                "; messages of other types than connection.fixMessageType are counted too, "
                                "and a commit is made only when "
                                "a row comes just as the count is a multiple of it, which may be seldom or "
                                "never; 1 commits every row.");
    }

    void redelivery() {
        const bool isUnlimited =
            urlInForce(settings_).find(provider::kUnlimitedRedelivery) != std::string::npos;
        if (!isAtActiveMq(settings_) || isUnlimited) return;
        result_.notes.push_back(
            "connection.jndiURL does not say " + std::string(provider::kUnlimitedRedelivery) +
            "; without it ActiveMQ moves messages to its dead-letter queue after six crashes or stops before "
            "their commit.");
    }

    void inJvmBroker() {
        if (provider::keepsFiles(text(params::kJndiUrl)) && !hasStore())
            problem(params::kJndiUrl,
                    "a broker inside the process keeps its messages in files, for which jars are missing, "
                    "unless the URL says " +
                        std::string(provider::kWithoutFiles));
    }

    // Whose jars a class path of its own has, nobody knows.
    bool hasStore() const {
        const std::vector<std::string>& jars = settings_.addClassPath;
        return !settings_.classPath.empty() || std::any_of(jars.begin(), jars.end(), provider::isOfStore);
    }

    void unused(const UsedForFormat& use) {
        const DataFormatInfo* info = dataFormatOf(settings_);
        const bool isUsed = info != nullptr && use.isRead(*info);
        const bool isGiven = settings_.connection.contains(use.name) &&
                             (use.standard == nullptr || text(use.name) != use.standard);
        if (isUsed || !isGiven) return;
        std::string formats;
        for (const DataFormatInfo& one : jmsin::kDataFormats) {
            if (use.isRead(one)) addToList(formats, inQuotes(one.name), " or ");
        }
        unread(use.name, params::kDataFormat, formats);
    }

    void unread(const char* name, const char* by, const std::string& kinds) {
        result_.notes.push_back("connection." + std::string(name) + " is not read unless connection." + by +
                                " is " + kinds + ".");
    }

    const Settings& settings_;
    CheckResult result_;
};

}  // namespace

CheckResult checkSettings(const Settings& settings) {
    CheckResult result = Checker(settings).result();
    if (hasSink(settings)) checkSink(settings, result);
    checkSettling(settings, result);
    return result;
}

}  // namespace host
