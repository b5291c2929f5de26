#include "host/commands/Broker.h"

#include <future>

#include "host/process/ClassPath.h"
#include "host/process/Failure.h"
#include "host/process/JavaObject.h"
#include "host/process/Jvm.h"
#include "host/process/Output.h"
#include "host/process/Provider.h"
#include "host/process/Signals.h"

namespace host {

namespace {

const std::string kAddress = "tcp://127.0.0.1:";
constexpr std::chrono::seconds kLookEvery(1);
constexpr std::chrono::seconds kLongestBrokerStop(60);  // it has a store to leave in order

void keepMessagesIn(const std::string& data, JNIEnv* env, const JavaObject& broker) {
    broker.call("setDataDirectory", data);
    const JavaObject store(
        env, broker.get("getPersistenceAdapter", "Lorg/apache/activemq/store/PersistenceAdapter;"));
    const JavaObject locker(env, store.get("getLocker", "Lorg/apache/activemq/broker/Locker;"));
    // Else it waits without a word for as long as another broker has the folder.
    locker.call("setFailIfLocked", true);
}

void configure(JNIEnv* env, const JavaObject& broker, const std::string& data) {
    broker.call("setUseJmx", false);
    broker.call("setUseShutdownHook", false);
    broker.call("setPersistent", !data.empty());
    if (!data.empty()) keepMessagesIn(data, env, broker);
}

void start(const JavaObject& broker, const BrokerOptions& options) {
    try {
        broker.call("start");
    } catch (const JavaError& error) {
        if (!provider::isStoreLocked(error.what())) throw;
        throw Failure("The folder " + options.data +
                      " is locked by another broker; stop that one, or give --data a folder of its own.");
    }
}

void serve(const BrokerOptions& options, Output& output) {
    JNIEnv* env = attachThisThread();
    const JavaObject broker(env, "org/apache/activemq/broker/BrokerService");
    configure(env, broker, options.data);
    const JavaObject connector(env, broker.get("addConnector", kAddress + std::to_string(options.port),
                                               "Lorg/apache/activemq/broker/TransportConnector;"));
    // Not before it serves: a broker that starts, recovering a large store say, takes no stop.
    start(broker, options);
    std::promise<void> stopped;
    const StopAction onSignal(
        [&stopped, &output] {
            output.stop();
            stopped.set_value();
        },
        kLongestBrokerStop);
    const JavaObject uri(env, connector.get("getConnectUri", "Ljava/net/URI;"));
    output.write(kAddress + std::to_string(uri.getInt("getPort")) + '\n');
    const std::future<void> stop = stopped.get_future();
    while (stop.wait_for(kLookEvery) == std::future_status::timeout) {
        if (broker.isTrue("isStopped"))
            throw Failure(
                "The broker has stopped by itself, as it does when its store fails; see whether the disk "
                "of " +
                (options.data.empty() ? std::string("its temporary files") : options.data) + " is full.");
    }
    broker.call("stop");
}

}  // namespace

int runBroker(const BrokerOptions& options) {
    Output output;
    startJvm(brokerClassPath(options.data.empty() ? BrokerStore::kMemory : BrokerStore::kFiles), {});
    try {
        serve(options, output);
    } catch (const JavaError& error) {
        throw Failure(std::string("The broker failed: ") + error.what() + ".");
    }
    return kDone;
}

}  // namespace host
