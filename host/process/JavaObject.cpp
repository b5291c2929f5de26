#include "host/process/JavaObject.h"

#include "toolkit/kel_java_native.h"

namespace host {

JNIEnv* attachThisThread() {
    void* env = nullptr;
    _globaljvm->AttachCurrentThread(&env, nullptr);
    return static_cast<JNIEnv*>(env);
}

JavaObject::JavaObject(JNIEnv* env, const char* className) : env_(env) {
    const LocalRef<jclass> type(env, env->FindClass(className));
    check();
    object_ = env->NewObject(type.get(), env->GetMethodID(type.get(), "<init>", "()V"));
    check();
}

void JavaObject::call(const char* name) const {
    env_->CallVoidMethod(object_, find(name, "()V"));
    check();
}

void JavaObject::call(const char* name, bool argument) const {
    env_->CallVoidMethod(object_, find(name, "(Z)V"), toJava(argument));
    check();
}

void JavaObject::call(const char* name, const std::string& argument) const {
    env_->CallVoidMethod(object_, find(name, "(Ljava/lang/String;)V"), newString(argument).get());
    check();
}

jobject JavaObject::get(const char* name, const char* type) const {
    const jobject result = env_->CallObjectMethod(object_, find(name, std::string("()") + type));
    check();
    return result;
}

jobject JavaObject::get(const char* name, const std::string& argument, const char* type) const {
    const jmethodID method = find(name, std::string("(Ljava/lang/String;)") + type);
    const jobject result = env_->CallObjectMethod(object_, method, newString(argument).get());
    check();
    return result;
}

bool JavaObject::isTrue(const char* name) const {
    const jboolean result = env_->CallBooleanMethod(object_, find(name, "()Z"));
    check();
    return result == JNI_TRUE;
}

int JavaObject::getInt(const char* name) const {
    const jint result = env_->CallIntMethod(object_, find(name, "()I"));
    check();
    return result;
}

std::string JavaObject::text() const {
    const LocalRef<jstring> string(env_, static_cast<jstring>(get("toString", "Ljava/lang/String;")));
    const UtfChars chars(env_, string.get());
    return chars ? chars.get() : "";
}

jmethodID JavaObject::find(const char* name, const std::string& signature) const {
    const LocalRef<jclass> type(env_, env_->GetObjectClass(object_));
    const jmethodID method = env_->GetMethodID(type.get(), name, signature.c_str());
    check();
    return method;
}

LocalRef<jstring> JavaObject::newString(const std::string& text) const {
    return {env_, env_->NewStringUTF(text.c_str())};
}

void JavaObject::check() const {
    const jthrowable thrown = env_->ExceptionOccurred();
    if (thrown == nullptr) return;
    env_->ExceptionClear();
    std::string reason = JavaObject(env_, thrown).text();
    while (reason.ends_with('.')) reason.pop_back();
    throw JavaError(reason);
}

}  // namespace host
