#include "host/connection/ConnectionState.h"

#include <jni.h>

#include "jms/JniReferences.h"
#include "toolkit/kel_java_native.h"

namespace host {

ConnectionState connectionState() {
    void* environment = nullptr;
    if (_globaljvm == nullptr || _globaljvm->GetEnv(&environment, JNI_VERSION_10) != JNI_OK)
        return ConnectionState::kOpen;
    auto* env = static_cast<JNIEnv*>(environment);
    const LocalRef<jclass> connector(env, env->FindClass(contract::kClass));
    const jmethodID method = connector ? env->GetStaticMethodID(connector.get(), kConnectionStateMethod.name,
                                                                kConnectionStateMethod.signature)
                                       : nullptr;
    const jint state = method != nullptr ? env->CallStaticIntMethod(connector.get(), method) : 0;
    if (env->ExceptionCheck() == JNI_TRUE) {
        env->ExceptionClear();
        return ConnectionState::kOpen;
    }
    return static_cast<ConnectionState>(state);
}

}  // namespace host
