// The server's JVM host, libkel_java_native_lib: declarations only.
#pragma once

#include <jni.h>

// Set by the server before an adapter is reset; null: there is no JVM in this process.
extern "C" JavaVM* _globaljvm;
