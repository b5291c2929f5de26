#include "host/connection/CopySender.h"

#include <vector>

#include "host/process/JavaObject.h"
#include "host/process/Provider.h"
#include "host/values/ModifiedUtf8.h"
#include "jms/ConnectorMethods.h"
#include "jms/JniReferences.h"

namespace host {

namespace {

constexpr char kReplayClass[] = "com/morvex/kel/connectors/Replay";
constexpr contract::Method kSend = {
    "send", "(Lcom/morvex/kel/connectors/JmsConnector;[B[Ljava/lang/String;Ljava/lang/String;)Z"};
constexpr char kQueueName[] = "kel.replay";

LocalRef<jstring> newString(JNIEnv* env, const std::string& utf8) {
    std::string modified;
    appendModifiedUtf8(utf8, modified);
    return {env, env->NewStringUTF(modified.c_str())};
}

// Name, type and value of all there is to the copy, the kind first.
LocalRef<jobjectArray> descriptionOf(JNIEnv* env, const MessageCopy& copy) {
    std::vector<std::string> texts = {"kind", "", copy.kind};
    for (const EnvelopeField& field : copy.envelope)
        texts.insert(texts.end(), {field.name, field.type, field.value});
    const LocalRef<jclass> stringClass(env, env->FindClass(contract::kStringClass));
    const auto length = static_cast<jsize>(texts.size());
    jobjectArray array = env->NewObjectArray(length, stringClass.get(), nullptr);
    for (jsize i = 0; array != nullptr && i < length; ++i) {
        const LocalRef<jstring> text = newString(env, texts[static_cast<size_t>(i)]);
        if (!text) return {env, nullptr};
        env->SetObjectArrayElement(array, i, text.get());
    }
    return {env, array};
}

// False when there is an exception, which is told.
bool described(JNIEnv* env) {
    if (env->ExceptionCheck() == JNI_FALSE) return true;
    env->ExceptionDescribe();
    env->ExceptionClear();
    return false;
}

// Null where the body was not kept.
LocalRef<jbyteArray> bodyOf(JNIEnv* env, const MessageCopy& copy) {
    if (!copy.body) return {env, nullptr};
    const auto length = static_cast<jsize>(copy.body->size());
    jbyteArray array = env->NewByteArray(length);
    if (array != nullptr)
        env->SetByteArrayRegion(array, 0, length, reinterpret_cast<const jbyte*>(copy.body->data()));
    return {env, array};
}

}  // namespace

Settings withOwnQueue(Settings settings) {
    settings.connection[params::kJndiUrl] = std::string("vm://kel-replay") + provider::kWithoutFiles;
    settings.connection[params::kJndiContextFactory] = provider::kContextFactory;
    settings.connection[params::kConnectionFactory] = provider::kConnectionFactory;
    settings.connection[params::kDestinationType] = jmsin::kQueue;
    settings.connection[params::kDestinationName] = kQueueName;
    settings.connection[params::kSubscriptionMode] = jmsin::kNonDurable;
    settings.selector.clear();
    settings.prefetch = 0;
    // Whatever the provider, its jars stay: a converter may know them.
    if (!settings.classPath.empty()) {
        for (const provider::Jar& jar : provider::clientJars()) settings.addClassPath.emplace_back(jar.file);
    }
    return settings;
}

CopySender::CopySender(Context& context, RowType& rowType, Parameters& parameters)
    : client_(context, rowType, parameters, BridgeClient::Use::kSend) {}

bool CopySender::send(const MessageCopy& copy, const std::string& replayOf) {
    JNIEnv* env = attachThisThread();
    const LocalRef<jclass> replay(env, env->FindClass(kReplayClass));
    const jmethodID send =
        replay ? env->GetStaticMethodID(replay.get(), kSend.name, kSend.signature) : nullptr;
    bool isSent = false;
    if (send != nullptr) {
        // Without memory for one of them the exception stands, under which nothing may be called.
        const LocalRef<jbyteArray> body = bodyOf(env, copy);
        if (copy.body && !body) {
            described(env);
            return false;
        }
        const LocalRef<jobjectArray> description = descriptionOf(env, copy);
        if (!description) {
            described(env);
            return false;
        }
        const LocalRef<jstring> of = newString(env, replayOf);
        isSent = env->CallStaticBooleanMethod(replay.get(), send, client_.bridge().connector, body.get(),
                                              description.get(), of.get()) == JNI_TRUE;
    }
    return described(env) && isSent;
}

}  // namespace host
