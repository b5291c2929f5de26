// What this host knows of ActiveMQ, the provider of the distribution; of any other it knows nothing.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace host::provider {

struct Jar {
    const char* file;
    const char* package;  // of the distribution
};

// What a client over tcp and vm, with a broker in the JVM, needs at run time; and what that broker keeps
// messages in files with.
std::span<const Jar> clientJars();
std::span<const Jar> storeJars();
bool isOfStore(std::string_view jar);

// Options of the JVM by which an object message cannot bring any other classes than those of values.
std::vector<std::string> admittedClasses();

bool isContextFactory(std::string_view javaClass);  // its class for JNDI
inline constexpr char kContextFactory[] = "org.apache.activemq.jndi.ActiveMQInitialContextFactory";
inline constexpr char kConnectionFactory[] = "ConnectionFactory";  // there is one of that name always

// Whether the URL is of a broker inside the process that uses it, also as one of several: vm://a,
// vm:(...), failover:(vm://a); and whether such a broker keeps messages in files.
bool isInJvmBroker(std::string_view url);
bool keepsFiles(std::string_view url);
inline constexpr char kWithoutFiles[] = "?broker.persistent=false&broker.useJmx=false";

// Of a URL's own options, those behind the address, or behind the parentheses of several addresses: the first
// whose key begins so, as key=value, "" for none; and the URL with that option added. An option that is there
// stays as it is; all else stays byte for byte, but addresses that stand bare come into parentheses, since
// their options are each their own.
std::string optionBeginningWith(std::string_view url, std::string_view key);
std::string withOption(const std::string& url, const std::string& key, const std::string& value);

// Whether the client makes a lost connection anew without telling.
bool reconnectsByItself(std::string_view url);

// What a URL says so that a message is never moved to the dead-letter queue.
inline constexpr char kUnlimitedRedelivery[] = "jms.redeliveryPolicy.maximumRedeliveries=-1";

// What must be said besides where the host itself knows which messages came before: a client that drops
// those that it knows would call them poison.
struct Option {
    const char* key;
    const char* value;
};
std::span<const Option> optionsForSink();

// Whether the client goes on without an answer to an acknowledgement.
inline constexpr char kAcknowledgeAsync[] = "jms.sendAcksAsync";

// How many messages come ahead, of every kind of destination; and what the options about it begin with.
inline constexpr char kPrefetch[] = "jms.prefetchPolicy.all";
inline constexpr char kPrefetchOptions[] = "jms.prefetchPolicy.";

// Whether the exception's text says that another broker has the lock of the store.
bool isStoreLocked(std::string_view exception);

}  // namespace host::provider
