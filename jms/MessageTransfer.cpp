// One message between the Java connector and a row. Receiving is the hot path: one call into Java a message,
// no look-ups, every reference and character buffer given back as soon as its text is copied.
#include "jms/JmsUtils.h"

#include "adapter/Adapter.h"
#include "jms/ConnectorMethods.h"
#include "jms/JniReferences.h"
#include "jms/MessageLayout.h"

namespace {

constexpr jsize kPrefixLength = jms::kPrefixLength;
constexpr char kDefaultCustomOp = 'p';

// A string element of an array with its characters; both null for a null element.
struct Element {
    Element(JNIEnv* env, jobjectArray array, jsize index)
        : string(env, static_cast<jstring>(env->GetObjectArrayElement(array, index))),
          chars(env, string.get()) {}
    LocalRef<jstring> string;
    UtfChars chars;
};

void storeText(JNIEnv* env, jobjectArray array, jsize index, const char* text) {
    if (text == nullptr) return;  // the array was made of nulls
    const LocalRef<jstring> string(env, env->NewStringUTF(text));
    env->SetObjectArrayElement(array, index, string.get());
}

}  // namespace

bool JmsUtils::receiveTextMessage(std::string& text) {
    JNIEnv* jni = environmentFor(receiveTextMessageId);
    if (jni == nullptr) return false;
    const LocalRef<jstring> message(
        jni, static_cast<jstring>(jni->CallObjectMethod(connector, receiveTextMessageId)));
    if (exceptionOccurred(jni) || !message) return false;
    const UtfChars chars(jni, message.get());
    if (!chars) return false;
    text = chars.get();
    return true;
}

bool JmsUtils::receiveObjectArrayMessage(const std::string& streamName, void* row,
                                         bool expectStreamNameOpcode) {
    JNIEnv* jni = environmentFor(receiveObjectArrayMessageId);
    if (jni == nullptr) return false;
    const LocalRef<jobjectArray> message(
        jni, static_cast<jobjectArray>(jni->CallObjectMethod(connector, receiveObjectArrayMessageId,
                                                             toJava(expectStreamNameOpcode))));
    if (exceptionOccurred(jni) || !message) return false;
    if (!expectStreamNameOpcode) {
        storeFields(message.get(), 0, row);
        return true;
    }
    const jsize length = jni->GetArrayLength(message.get());
    if (length == 0) return true;  // nothing waiting
    if (length < kPrefixLength) return false;
    {
        const Element name(jni, message.get(), 0);
        if (!name.chars || streamName != name.chars.get()) return false;
    }
    {
        const Element op(jni, message.get(), 1);
        if (op.chars) adapter->setOp(row, op.chars.get()[0]);
    }
    storeFields(message.get(), kPrefixLength, row);
    return true;
}

bool JmsUtils::receiveCustomMessage(const std::string& streamName, void* row) {
    JNIEnv* jni = environmentFor(receiveCustomMessageId);
    if (jni == nullptr) return false;
    const LocalRef<jobjectArray> message(
        jni, static_cast<jobjectArray>(jni->CallObjectMethod(connector, receiveCustomMessageId)));
    if (exceptionOccurred(jni) || !message) return false;
    if (jni->GetArrayLength(message.get()) < kPrefixLength) return false;
    {
        // Unlike an object array, a converter may leave the stream open: its messages are for this one.
        const Element name(jni, message.get(), 0);
        if (name.chars && streamName != name.chars.get()) return false;
    }
    {
        const Element op(jni, message.get(), 1);
        adapter->setOp(row, op.chars ? op.chars.get()[0] : kDefaultCustomOp);
    }
    storeFields(message.get(), kPrefixLength, row);
    return true;
}

void JmsUtils::storeFields(jobjectArray message, jsize first, void* row) {
    for (int field = 0; first + field < env->GetArrayLength(message); ++field) {
        const Element value(env, message, first + field);
        adapter->setFieldAsStringWithIndex(row, field, value.chars.get());
    }
}

void JmsUtils::loadFields(void* row, jobjectArray message, jsize first) {
    for (int field = 0; field < adapter->size(row); ++field) {
        const char* value = nullptr;
        if (adapter->getFieldAsStringWithIndex(row, field, &value))
            storeText(env, message, first + field, value);
    }
}

bool JmsUtils::sendTextMessage(const std::string& text, void* row) {
    JNIEnv* jni = environmentFor(sendTextMessageId);
    if (jni == nullptr) return false;
    const LocalRef<jclass> stringClass(jni, jni->FindClass(contract::kStringClass));
    const LocalRef<jobjectArray> fields(jni,
                                        jni->NewObjectArray(adapter->size(row), stringClass.get(), nullptr));
    if (!fields) return false;
    loadFields(row, fields.get(), 0);
    const LocalRef<jstring> body(jni, jni->NewStringUTF(text.c_str()));
    return jni->CallBooleanMethod(connector, sendTextMessageId, body.get(), fields.get()) == JNI_TRUE;
}

bool JmsUtils::sendObjectArrayMessage(const std::string& streamName, void* row, bool withStreamNameOpcode) {
    return sendArray(sendObjectArrayMessageId, streamName, row, withStreamNameOpcode, true);
}

bool JmsUtils::sendCustomMessage(const std::string& streamName, void* row) {
    return sendArray(sendCustomMessageId, streamName, row, true, false);
}

bool JmsUtils::sendArray(jmethodID method, const std::string& streamName, void* row, bool withPrefix,
                         bool passFlag) {
    JNIEnv* jni = environmentFor(method);
    if (jni == nullptr) return false;
    const jsize first = withPrefix ? kPrefixLength : 0;
    const LocalRef<jclass> stringClass(jni, jni->FindClass(contract::kStringClass));
    const LocalRef<jobjectArray> message(
        jni, jni->NewObjectArray(adapter->size(row) + first, stringClass.get(), nullptr));
    if (!message) return false;
    if (withPrefix) {
        const char op[] = {adapter->getOp(row), '\0'};
        storeText(jni, message.get(), 0, streamName.c_str());
        storeText(jni, message.get(), 1, op);
    }
    loadFields(row, message.get(), first);
    const jboolean sent = passFlag
                              ? jni->CallBooleanMethod(connector, method, message.get(), toJava(withPrefix))
                              : jni->CallBooleanMethod(connector, method, message.get());
    return sent == JNI_TRUE;
}
