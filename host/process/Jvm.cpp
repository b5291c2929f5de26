#include "host/process/Jvm.h"

#include <dlfcn.h>
#include <jni.h>

#include <cstdlib>
#include <filesystem>

#include "host/process/Failure.h"
#include "host/process/Installation.h"
#include "host/process/Provider.h"
#include "host/values/ModifiedUtf8.h"
#include "jms/JniReferences.h"
#include "toolkit/kel_java_native.h"

namespace fs = std::filesystem;

namespace host {

namespace {

constexpr char kLibraryBelowHome[] = "lib/server/libjvm.so";

constexpr const char* kOwnOptions[] = {
    "-Xrs",  // the process handles SIGINT and SIGTERM itself
    "-Djava.util.logging.SimpleFormatter.format=%4$s: %5$s%6$s%n",
};

std::string libraryFile() {
    const char* home = std::getenv("JAVA_HOME");
    if (home != nullptr && *home != '\0') {
        const fs::path file = fs::path(home) / kLibraryBelowHome;
        if (!isThere(file))
            throw Failure("JAVA_HOME is " + std::string(home) + ", but there is no " + file.string() +
                          "; unset it, or set it to an installation of Java 17 or later.");
        return file;
    }
    return KEL_JVM_LIBRARY;
}

const char* meaning(jint result) {
    switch (result) {
        case JNI_EVERSION:
            return "it does not know the JNI version that is asked for";
        case JNI_ENOMEM:
            return "there is not enough memory for it";
        case JNI_EEXIST:
            return "there is one in this process already";
        case JNI_EINVAL:
            return "it refuses its options";
        default:
            return "it gives its reason above; look at the jvmOptions of the section [host]";
    }
}

}  // namespace

void startJvm(const std::string& classPath, const std::vector<std::string>& options) {
    const std::string file = libraryFile();
    void* library = ::dlopen(file.c_str(), RTLD_NOW | RTLD_GLOBAL);
    if (library == nullptr)
        throw Failure(std::string("The Java virtual machine cannot be loaded: ") + ::dlerror() + ".");
    using CreateJavaVm = jint (*)(JavaVM**, void**, void*);
    const auto createJavaVm = reinterpret_cast<CreateJavaVm>(::dlsym(library, "JNI_CreateJavaVM"));
    if (createJavaVm == nullptr)
        throw Failure(file + " is no Java virtual machine: it has no JNI_CreateJavaVM.");

    std::vector<std::string> all(std::begin(kOwnOptions), std::end(kOwnOptions));
    for (std::string& option : provider::admittedClasses()) all.push_back(std::move(option));
    all.push_back("-Djava.class.path=" + classPath);
    all.insert(all.end(), options.begin(), options.end());
    std::vector<JavaVMOption> jvmOptions;
    jvmOptions.reserve(all.size());
    for (std::string& option : all) jvmOptions.push_back({option.data(), nullptr});
    JavaVMInitArgs arguments{JNI_VERSION_10, static_cast<jint>(jvmOptions.size()), jvmOptions.data(),
                             JNI_FALSE};
    JavaVM* jvm = nullptr;
    void* environment = nullptr;
    if (const jint result = createJavaVm(&jvm, &environment, &arguments); result != JNI_OK)
        throw Failure(std::string("The Java virtual machine does not start: ") + meaning(result) + ".");
    _globaljvm = jvm;
}

void setJavaProperty(const std::string& property) {
    void* environment = nullptr;
    _globaljvm->GetEnv(&environment, JNI_VERSION_10);
    auto* env = static_cast<JNIEnv*>(environment);
    const auto javaText = [env](std::string_view utf8) {
        std::string modified;
        appendModifiedUtf8(utf8, modified);
        return LocalRef<jstring>(env, env->NewStringUTF(modified.c_str()));
    };
    const size_t equals = property.find('=');
    const LocalRef<jclass> system(env, env->FindClass("java/lang/System"));
    const jmethodID set =
        system ? env->GetStaticMethodID(system.get(), "setProperty",
                                        "(Ljava/lang/String;Ljava/lang/String;)Ljava/lang/String;")
               : nullptr;
    if (set != nullptr) {
        const auto name = javaText(std::string_view(property).substr(0, equals));
        const auto value = javaText(std::string_view(property).substr(equals + 1));
        const LocalRef<jobject> former(
            env, env->CallStaticObjectMethod(system.get(), set, name.get(), value.get()));
    }
    if (env->ExceptionCheck() == JNI_FALSE) return;
    env->ExceptionDescribe();
    env->ExceptionClear();
    throw Failure("The system property " + property.substr(0, equals) +
                  " could not be set; the reason stands above.");
}

JvmThread::~JvmThread() {
    if (_globaljvm != nullptr) _globaljvm->DetachCurrentThread();
}

}  // namespace host
