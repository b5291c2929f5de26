#include "toolkit/kel_java_native.h"

JavaVM* _globaljvm = nullptr;
