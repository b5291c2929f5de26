// Owners of what JNI hands out. The thread stays attached for the process' life, so a local reference or a
// character buffer that is not given back stays too. Release is permitted while a Java exception is pending.
#pragma once

#include <jni.h>

inline jboolean toJava(bool flag) { return flag ? JNI_TRUE : JNI_FALSE; }

template <typename T>
class LocalRef {
public:
    LocalRef(JNIEnv* env, T ref) : env_(env), ref_(ref) {}
    ~LocalRef() {
        if (ref_ != nullptr) env_->DeleteLocalRef(ref_);
    }
    LocalRef(const LocalRef&) = delete;
    LocalRef& operator=(const LocalRef&) = delete;

    T get() const { return ref_; }
    explicit operator bool() const { return ref_ != nullptr; }

private:
    JNIEnv* env_;
    T ref_;
};

// The characters of a Java string in modified UTF-8; null for a null string.
class UtfChars {
public:
    UtfChars(JNIEnv* env, jstring text)
        : env_(env), text_(text), chars_(text != nullptr ? env->GetStringUTFChars(text, nullptr) : nullptr) {}
    ~UtfChars() {
        if (chars_ != nullptr) env_->ReleaseStringUTFChars(text_, chars_);
    }
    UtfChars(const UtfChars&) = delete;
    UtfChars& operator=(const UtfChars&) = delete;

    const char* get() const { return chars_; }
    explicit operator bool() const { return chars_ != nullptr; }

private:
    JNIEnv* env_;
    jstring text_;
    const char* chars_;
};
