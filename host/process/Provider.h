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

// What a URL says so that a message is never moved to the dead-letter queue.
inline constexpr char kUnlimitedRedelivery[] = "jms.redeliveryPolicy.maximumRedeliveries=-1";

// Whether the exception's text says that another broker has the lock of the store.
bool isStoreLocked(std::string_view exception);

}  // namespace host::provider
