#include "host/configuration/Rules.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <fstream>
#include <initializer_list>
#include <set>

#include "host/configuration/ConnectorLimits.h"
#include "host/process/Installation.h"
#include "host/process/Provider.h"
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
        for (const std::string& option : settings_.jvmOptions) {
            const std::string fault = faultOfLimit(option);
            if (!fault.empty()) result_.problems.push_back("host.jvmOptions has " + fault);
        }
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
        const bool isUnlimited = text("jndiURL").find(provider::kUnlimitedRedelivery) != std::string::npos;
        if (!provider::isContextFactory(text("jndiContextFactory")) || isUnlimited) return;
        result_.notes.push_back(
            "connection.jndiURL does not say " + std::string(provider::kUnlimitedRedelivery) +
            "; without it ActiveMQ moves messages to its dead-letter queue after six crashes or stops before "
            "their commit.");
    }

    void inJvmBroker() {
        if (provider::keepsFiles(text("jndiURL")) && !hasStore())
            problem("jndiURL",
                    "a broker inside the process keeps its messages in files, for which jars are missing, "
                    "unless the URL says " +
                        std::string(provider::kWithoutFiles));
    }

    // Whose jars a class path of its own has, nobody knows.
    bool hasStore() const {
        const std::vector<std::string>& jars = settings_.addClassPath;
        return !settings_.classPath.empty() || std::any_of(jars.begin(), jars.end(), provider::isOfStore);
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

}  // namespace

CheckResult checkSettings(const Settings& settings) { return Checker(settings).result(); }

}  // namespace host
