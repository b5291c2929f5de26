#include "host/commands/Broker.h"

#include <jni.h>

#include <future>

#include "host/process/ClassPath.h"
#include "host/process/Console.h"
#include "host/process/Failure.h"
#include "host/process/Jvm.h"
#include "host/process/Output.h"
#include "host/process/Signals.h"
#include "jms/JniReferences.h"
#include "toolkit/kel_java_native.h"

namespace host {

namespace {

const std::string kAddress = "tcp://127.0.0.1:";
constexpr std::chrono::seconds kLookEvery(1);
constexpr std::chrono::seconds kLongestBrokerStop(60);  // it has a store to leave in order

// One Java object and calls of its methods by name; a Java exception becomes a Failure with its text.
class JavaObject {
public:
    JavaObject(JNIEnv* env, const char* className) : env_(env) {
        const LocalRef<jclass> type(env, env->FindClass(className));
        check();
        object_ = env->NewObject(type.get(), env->GetMethodID(type.get(), "<init>", "()V"));
        check();
    }
    JavaObject(JNIEnv* env, jobject object) : env_(env), object_(object) {}
    ~JavaObject() { env_->DeleteLocalRef(object_); }
    JavaObject(const JavaObject&) = delete;
    JavaObject& operator=(const JavaObject&) = delete;

    template <typename... Arguments>
    void call(const char* name, const char* signature, Arguments... arguments) const {
        const jmethodID method = find(name, signature);
        env_->CallVoidMethod(object_, method, arguments...);
        check();
    }

    template <typename... Arguments>
    jobject get(const char* name, const char* signature, Arguments... arguments) const {
        const jmethodID method = find(name, signature);
        const jobject result = env_->CallObjectMethod(object_, method, arguments...);
        check();
        return result;
    }

    bool isTrue(const char* name) const {
        const jboolean result = env_->CallBooleanMethod(object_, find(name, "()Z"));
        check();
        return result == JNI_TRUE;
    }

    int getInt(const char* name) const {
        const jint result = env_->CallIntMethod(object_, find(name, "()I"));
        check();
        return result;
    }

    std::string text() const {
        const LocalRef<jstring> string(env_, static_cast<jstring>(get("toString", "()Ljava/lang/String;")));
        const UtfChars chars(env_, string.get());
        return chars ? chars.get() : "";
    }

private:
    jmethodID find(const char* name, const char* signature) const {
        const LocalRef<jclass> type(env_, env_->GetObjectClass(object_));
        const jmethodID method = env_->GetMethodID(type.get(), name, signature);
        check();
        return method;
    }

    void check() const {
        const jthrowable thrown = env_->ExceptionOccurred();
        if (thrown == nullptr) return;
        env_->ExceptionClear();
        std::string reason = JavaObject(env_, thrown).text();
        while (reason.ends_with('.')) reason.pop_back();
        throw Failure("The broker failed: " + reason + ".");
    }

    JNIEnv* env_;
    jobject object_ = nullptr;
};

JNIEnv* thisThreadsEnvironment() {
    void* env = nullptr;
    _globaljvm->AttachCurrentThread(&env, nullptr);
    return static_cast<JNIEnv*>(env);
}

LocalRef<jstring> newString(JNIEnv* env, const std::string& text) {
    return {env, env->NewStringUTF(text.c_str())};
}

void keepMessagesIn(const std::string& data, JNIEnv* env, const JavaObject& broker) {
    broker.call("setDataDirectory", "(Ljava/lang/String;)V", newString(env, data).get());
    const JavaObject store(
        env, broker.get("getPersistenceAdapter", "()Lorg/apache/activemq/store/PersistenceAdapter;"));
    const JavaObject locker(env, store.get("getLocker", "()Lorg/apache/activemq/broker/Locker;"));
    // Else it waits without a word for as long as another broker has the folder.
    locker.call("setFailIfLocked", "(Z)V", JNI_TRUE);
}

void configure(JNIEnv* env, const JavaObject& broker, const std::string& data) {
    broker.call("setUseJmx", "(Z)V", JNI_FALSE);
    broker.call("setUseShutdownHook", "(Z)V", JNI_FALSE);
    broker.call("setPersistent", "(Z)V", data.empty() ? JNI_FALSE : JNI_TRUE);
    if (!data.empty()) keepMessagesIn(data, env, broker);
}

void start(const JavaObject& broker, const BrokerOptions& options) {
    try {
        broker.call("start", "()V");
    } catch (const Failure& failure) {
        const bool isLocked = std::string_view(failure.what()).find("not be locked") != std::string::npos;
        if (!isLocked) throw;
        throw Failure("The folder " + options.data +
                      " is locked by another broker; stop that one, or give --data a folder of its own.");
    }
}

}  // namespace

int runBroker(const BrokerOptions& options) {
    Output output;
    startJvm(brokerClassPath(!options.data.empty()), {});
    JNIEnv* env = thisThreadsEnvironment();
    const JavaObject broker(env, "org/apache/activemq/broker/BrokerService");
    configure(env, broker, options.data);
    const JavaObject connector(
        env, broker.get("addConnector", "(Ljava/lang/String;)Lorg/apache/activemq/broker/TransportConnector;",
                        newString(env, kAddress + std::to_string(options.port)).get()));
    // Not before it serves: a broker that starts, recovering a large store say, takes no stop.
    start(broker, options);
    std::promise<void> stopped;
    const StopAction onSignal(
        [&stopped, &output] {
            output.stop();
            stopped.set_value();
        },
        kLongestBrokerStop);
    const JavaObject uri(env, connector.get("getConnectUri", "()Ljava/net/URI;"));
    output.write(kAddress + std::to_string(uri.getInt("getPort")) + '\n');
    const std::future<void> stop = stopped.get_future();
    while (stop.wait_for(kLookEvery) == std::future_status::timeout) {
        if (broker.isTrue("isStopped"))
            throw Failure(
                "The broker has stopped by itself, as it does when its store fails; see whether the disk "
                "of " +
                (options.data.empty() ? std::string("its temporary files") : options.data) + " is full.");
    }
    broker.call("stop", "()V");
    return kDone;
}

}  // namespace host
