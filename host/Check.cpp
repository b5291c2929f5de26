#include "host/Check.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <set>

#include "host/ClassPath.h"
#include "host/Console.h"
#include "host/Installation.h"
#include "host/toolkit/ModifiedUtf8.h"
#include "host/toolkit/Text.h"

namespace host {

namespace {

class Checker {
public:
    explicit Checker(const Settings& settings) : settings_(settings) {}

    std::vector<std::string> problems() {
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
        // The adapter takes any other value for a topic, and for a non-durable subscription.
        oneOf("destinationType", {"QUEUE", "TOPIC"}, false);
        oneOf("subscriptionMode", {"NONDURABLE", "DURABLE"}, true);
        if (text("subscriptionMode") == "DURABLE") durable();
        inJvmBroker();
        return std::move(problems_);
    }

private:
    // As it stands in the file; "" when it does not.
    std::string text(const char* name) const {
        const auto found = settings_.connection.find(name);
        return found != settings_.connection.end() ? toUtf8(found->second) : std::string();
    }

    void problem(const char* name, const std::string& allowed) {
        if (settings_.malformed.contains(name)) return;  // that is the problem
        const bool isThere = settings_.connection.contains(name);
        problems_.push_back("connection." + std::string(name) +
                            (isThere ? " is " + inQuotes(text(name)) : " is missing") + "; " + allowed + ".");
    }

    void needed(const char* name, const std::string& what) {
        if (text(name).empty()) problem(name, "it must be " + what);
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
                problems_.push_back("stream.columns has " + inQuotes(name) +
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
    }

    void inJvmBroker() {
        const std::string url = text("jndiURL");
        if (url.starts_with("vm:") && settings_.classPath.empty() &&
            url.find("broker.persistent=false") == std::string::npos)
            problem("jndiURL",
                    "a broker inside the process keeps its messages in files, for which jars are "
                    "missing, unless the URL says ?broker.persistent=false&broker.useJmx=false");
    }

    const Settings& settings_;
    std::vector<std::string> problems_;
};

}  // namespace

std::vector<std::string> connectionProblems(const Settings& settings) { return Checker(settings).problems(); }

int checkConfiguration(const std::string& file, const std::vector<std::string>& overrides) {
    std::vector<std::string> problems;
    if (const auto settings = readSettings(file, overrides, problems)) {
        const std::string place = file + ": ";
        for (const std::string& problem : connectionProblems(*settings)) problems.push_back(place + problem);
        try {
            classPath(*settings);
        } catch (const Failure& failure) {
            problems.push_back(place + failure.what());
        }
    }
    for (const std::string& problem : problems) std::printf("%s\n", oneLine(problem).c_str());
    if (problems.empty()) std::printf("%s: no problems\n", oneLine(file).c_str());
    return problems.empty() ? kDone : kBadConfiguration;
}

}  // namespace host
