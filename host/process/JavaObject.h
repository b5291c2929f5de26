// Calls of Java objects by the names of their methods.
#pragma once

#include <jni.h>

#include <stdexcept>
#include <string>

#include "jms/JniReferences.h"

namespace host {

// The text of an exception that Java code threw, without the full stop that may end it.
class JavaError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The environment of this thread, which is attached to the JVM.
JNIEnv* attachThisThread();

// One Java object. Every operation throws JavaError.
class JavaObject {
public:
    JavaObject(JNIEnv* env, const char* className);  // made by the constructor without arguments
    JavaObject(JNIEnv* env, jobject object) : env_(env), object_(object) {}
    ~JavaObject() { env_->DeleteLocalRef(object_); }
    JavaObject(const JavaObject&) = delete;
    JavaObject& operator=(const JavaObject&) = delete;

    void call(const char* name) const;
    void call(const char* name, bool argument) const;
    void call(const char* name, const std::string& argument) const;

    // `type` is the result's, as in "Ljava/net/URI;". The reference is the caller's.
    jobject get(const char* name, const char* type) const;
    jobject get(const char* name, const std::string& argument, const char* type) const;

    bool isTrue(const char* name) const;
    int getInt(const char* name) const;
    std::string text() const;

private:
    jmethodID find(const char* name, const std::string& signature) const;
    LocalRef<jstring> newString(const std::string& text) const;
    void check() const;

    JNIEnv* env_;
    jobject object_ = nullptr;
};

}  // namespace host
