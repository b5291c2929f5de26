// Attaching to the JVM, the connector's life, commit and disconnect.
#include "jms/JmsUtils.h"

#include <algorithm>
#include <array>
#include <utility>

#include "adapter/Adapter.h"
#include "jms/ConnectorMethods.h"
#include "jms/JniReferences.h"
#include "toolkit/kel_java_native.h"

namespace {

constexpr int kMaxColumns = 4096;
constexpr jint kKindMask = 0xFF;  // the low bits of a type code; the connector knows kinds only

LocalRef<jstring> newString(JNIEnv* env, const std::string& text) {
    return {env, env->NewStringUTF(text.c_str())};
}

jmethodID find(JNIEnv* env, jclass type, const contract::Method& method) {
    return env->GetMethodID(type, method.name, method.signature);
}

// The kind of every column.
jintArray newColumnKinds(JNIEnv* env, Adapter& adapter, int count) {
    const jintArray array = env->NewIntArray(count);
    std::array<jint, kMaxColumns> kinds;
    for (int i = 0; i < count; ++i) kinds[i] = static_cast<jint>(adapter.getColumnDatatype(i)) & kKindMask;
    if (array != nullptr) env->SetIntArrayRegion(array, 0, count, kinds.data());
    return array;
}

// The name of every column, and what the map calls it on the connector's side: null for a name not in the
// map.
void nameColumns(JNIEnv* env, Adapter& adapter, int count,
                 const std::map<std::string, std::string>& columnMap, jobjectArray names,
                 jobjectArray mappedNames) {
    for (int i = 0; i < count; ++i) {
        const char* columnName = adapter.getColumnName(i);
        const std::string name = columnName != nullptr ? columnName : "";
        env->SetObjectArrayElement(names, i, newString(env, name).get());
        if (const auto mapped = columnMap.find(name); mapped != columnMap.end()) {
            env->SetObjectArrayElement(mappedNames, i, newString(env, mapped->second).get());
        }
    }
}

}  // namespace

JmsUtils::JmsUtils() = default;
JmsUtils::~JmsUtils() = default;

void JmsUtils::reset(Adapter* owner) { adapter = owner; }

bool JmsUtils::report(const char* text) {
    if (adapter != nullptr) adapter->addGeneral(adapter->connectionErrors, text);
    return false;
}

bool JmsUtils::initJvm() {
    if (_globaljvm == nullptr) return report("No JVM instance found");
    const std::lock_guard guard(replacing_);
    jvm = _globaljvm;
    return true;
}

JNIEnv* JmsUtils::getJniEnv() {
    if (env == nullptr && jvm != nullptr) jvm->AttachCurrentThread(reinterpret_cast<void**>(&env), nullptr);
    if (env == nullptr) report("Cannot attach thread to JVM");
    return env;
}

JNIEnv* JmsUtils::environmentFor(jmethodID method) {
    return jvm != nullptr && connector != nullptr && method != nullptr ? getJniEnv() : nullptr;
}

bool JmsUtils::exceptionOccurred(JNIEnv* environment) {
    const LocalRef<jthrowable> thrown(environment, environment->ExceptionOccurred());
    if (!thrown) return false;
    environment->ExceptionDescribe();
    environment->ExceptionClear();
    return true;
}

bool JmsUtils::init(const std::string& connectionFactory, const std::string& destinationType,
                    const std::string& destinationName, bool durable, bool forInput, bool bindSchema,
                    std::map<std::string, std::string>& columnMap, const std::string& jndiContextFactory,
                    const std::string& jndiURL, const std::string& clientID,
                    const std::string& subscriptionName) {
    if (!initJvm()) return false;
    env = nullptr;
    if (getJniEnv() == nullptr) return false;
    const LocalRef<jclass> connectorClass(env, env->FindClass(contract::kClass));
    if (exceptionOccurred(env)) return false;

    const LocalRef<jstring> factoryText = newString(env, connectionFactory);
    const LocalRef<jstring> contextText = newString(env, jndiContextFactory);
    const LocalRef<jstring> urlText = newString(env, jndiURL);
    const LocalRef<jstring> typeText = newString(env, destinationType);
    const LocalRef<jstring> nameText = newString(env, destinationName);
    const LocalRef<jstring> clientText = newString(env, clientID);
    const LocalRef<jstring> subscriptionText = newString(env, subscriptionName);

    const int count = bindSchema ? std::max(0, adapter->getColumnCount()) : 0;
    if (count > kMaxColumns) return report("Too many columns for the JMS connector");
    const LocalRef<jintArray> kinds(env, bindSchema ? newColumnKinds(env, *adapter, count) : nullptr);
    const LocalRef<jclass> stringClass(env, bindSchema ? env->FindClass(contract::kStringClass) : nullptr);
    const auto newStrings = [&] {
        return bindSchema ? env->NewObjectArray(count, stringClass.get(), nullptr) : nullptr;
    };
    const LocalRef<jobjectArray> names(env, newStrings());
    const LocalRef<jobjectArray> mappedNames(env, newStrings());
    if (names && mappedNames) nameColumns(env, *adapter, count, columnMap, names.get(), mappedNames.get());

    const jmethodID constructor = find(env, connectorClass.get(), contract::kConstructor);
    const LocalRef<jobject> created(
        env,
        constructor == nullptr
            ? nullptr
            : env->NewObject(connectorClass.get(), constructor, factoryText.get(), typeText.get(),
                             nameText.get(), toJava(durable), kinds.get(), names.get(), mappedNames.get(),
                             contextText.get(), urlText.get(), clientText.get(), subscriptionText.get()));
    replaceConnector(created ? env->NewGlobalRef(created.get()) : nullptr);

    bool connected = false;
    if (connector != nullptr) {
        connected = connect(connectorClass.get(), forInput, bindSchema);
        for (const contract::CachedMethod& cached : contract::kCached) {
            this->*cached.id = find(env, connectorClass.get(), cached.method);
        }
    }
    return !exceptionOccurred(env) && connected;
}

void JmsUtils::replaceConnector(jobject created) {
    jobject previous = created;
    {
        const std::lock_guard guard(replacing_);
        std::swap(connector, previous);
    }
    if (previous != nullptr) env->DeleteGlobalRef(previous);
}

bool JmsUtils::connect(jclass connectorClass, bool forInput, bool bindSchema) {
    const jmethodID method =
        find(env, connectorClass, forInput ? contract::kConnectForInput : contract::kConnectForOutput);
    if (method == nullptr) return false;
    const jboolean connected = forInput ? env->CallBooleanMethod(connector, method, toJava(bindSchema))
                                        : env->CallBooleanMethod(connector, method);
    return connected == JNI_TRUE;
}

bool JmsUtils::initConverter(const std::string& className, const std::string& param, bool forInput) {
    if (jvm == nullptr || connector == nullptr || getJniEnv() == nullptr) return false;
    const LocalRef<jclass> connectorClass(env, env->FindClass(contract::kClass));
    if (!connectorClass) return false;
    const jmethodID method =
        find(env, connectorClass.get(), forInput ? contract::kInitInConverter : contract::kInitOutConverter);
    if (method == nullptr) return false;
    const LocalRef<jstring> classText = newString(env, className);
    const LocalRef<jstring> paramText = newString(env, param);
    return env->CallBooleanMethod(connector, method, classText.get(), paramText.get()) == JNI_TRUE;
}

bool JmsUtils::commitTransaction() {
    JNIEnv* jni = environmentFor(commitTransactionId);
    if (jni == nullptr) return false;
    // The Java method is void, yet called for an object: without an exception the JVM leaves some non-null
    // word there. The word is no reference; it is compared with null and nothing else.
    const jobject result = jni->CallObjectMethod(connector, commitTransactionId);
    return !exceptionOccurred(jni) && result != nullptr;
}

bool JmsUtils::disconnect() {
    JavaVM* const machine = machineWithConnector();
    if (machine == nullptr) return false;
    // Not the kept environment: the thread that stops the adapter is another one.
    JNIEnv* jni = nullptr;
    machine->AttachCurrentThread(reinterpret_cast<void**>(&jni), nullptr);
    if (jni == nullptr) return report("Cannot attach thread to JVM");
    const LocalRef<jclass> connectorClass(jni, jni->FindClass(contract::kClass));
    if (!connectorClass) return false;
    const jmethodID method = find(jni, connectorClass.get(), contract::kDisconnect);
    if (method == nullptr) return false;
    const LocalRef<jobject> current(jni, newConnectorRef(jni));
    return current && jni->CallBooleanMethod(current.get(), method) == JNI_TRUE;
}

JavaVM* JmsUtils::machineWithConnector() {
    const std::lock_guard guard(replacing_);
    return connector != nullptr ? jvm : nullptr;
}

// A local reference: the global one is deleted when `init` replaces the connector.
jobject JmsUtils::newConnectorRef(JNIEnv* jni) {
    const std::lock_guard guard(replacing_);
    return connector != nullptr ? jni->NewLocalRef(connector) : nullptr;
}
