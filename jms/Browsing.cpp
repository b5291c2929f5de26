// Peeking at the messages that wait on the destination. Once per discovery, so nothing here is cached; every
// reference and character buffer is given back on the way, as there may be thousands of messages.
#include "adapter/Adapter.h"
#include "jms/ConnectorMethods.h"
#include "jms/JmsUtils.h"
#include "jms/JniReferences.h"

namespace {

std::string textOf(JNIEnv* env, jobjectArray array, jsize index) {
    const LocalRef<jstring> string(env, static_cast<jstring>(env->GetObjectArrayElement(array, index)));
    const UtfChars chars(env, string.get());
    return chars ? chars.get() : "";
}

void appendTexts(JNIEnv* env, jobjectArray array, std::vector<std::string>& texts) {
    const jsize length = env->GetArrayLength(array);
    for (jsize i = 0; i < length; ++i) texts.push_back(textOf(env, array, i));
}

}  // namespace

bool JmsUtils::browse(const contract::Method& method, jobjectArray& messages) {
    if (jvm == nullptr || connector == nullptr || getJniEnv() == nullptr) return false;
    const LocalRef<jclass> connectorClass(env, env->FindClass(contract::kClass));
    const jmethodID id =
        connectorClass ? env->GetMethodID(connectorClass.get(), method.name, method.signature) : nullptr;
    if (id != nullptr) messages = static_cast<jobjectArray>(env->CallObjectMethod(connector, id));
    return !exceptionOccurred(env) && id != nullptr;
}

bool JmsUtils::browseTextMessages(std::vector<std::string>& messages) {
    jobjectArray result = nullptr;
    if (!browse(contract::kBrowseTextMessages, result)) return false;
    const LocalRef<jobjectArray> found(env, result);
    if (found) appendTexts(env, found.get(), messages);
    return true;
}

bool JmsUtils::browseObjectArrayMessages(std::vector<std::vector<std::string>>& messages) {
    return browseArrays(contract::kBrowseObjectArrayMessages, messages);
}

bool JmsUtils::browseCustomMessages(std::vector<std::vector<std::string>>& messages) {
    return browseArrays(contract::kBrowseCustomMessages, messages);
}

bool JmsUtils::browseArrays(const contract::Method& method, std::vector<std::vector<std::string>>& messages) {
    jobjectArray result = nullptr;
    if (!browse(method, result)) return false;
    const LocalRef<jobjectArray> found(env, result);
    const jsize length = found ? env->GetArrayLength(found.get()) : 0;
    for (jsize i = 0; i < length; ++i) {
        const LocalRef<jobjectArray> message(
            env, static_cast<jobjectArray>(env->GetObjectArrayElement(found.get(), i)));
        messages.emplace_back();
        if (message) appendTexts(env, message.get(), messages.back());
    }
    return true;
}
