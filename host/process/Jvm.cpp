#include "host/process/Jvm.h"

#include <dlfcn.h>
#include <jni.h>

#include <cstdlib>
#include <filesystem>

#include "host/process/Failure.h"
#include "host/process/Installation.h"
#include "host/process/Provider.h"
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

JvmThread::~JvmThread() {
    if (_globaljvm != nullptr) _globaljvm->DetachCurrentThread();
}

}  // namespace host
