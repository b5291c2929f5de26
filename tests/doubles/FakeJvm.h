// A JVM for tests: a hand-made JNI function table that runs a scripted connector and keeps book of every
// local and global reference, every character buffer and the pending exception. What real JNI forbids is
// noted as a fault: an unknown or deleted reference, a call with an exception pending, an index out of range.
#pragma once

#include <jni.h>

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace fake {

struct Object {
    std::string text;  // of a string; of an array "["
    std::vector<std::shared_ptr<Object>> elements;
};
using Value = std::shared_ptr<Object>;

Value string(const std::string& text);
Value array(const std::vector<std::optional<std::string>>& elements);
Value array(const std::vector<Value>& elements);

// What a method of the connector does once: answers, or throws.
struct Answer {
    Value object;
    jboolean flag = JNI_TRUE;
    bool throws = false;
};

struct Jvm {
    Jvm();
    ~Jvm();  // takes itself out of _globaljvm
    Jvm(const Jvm&) = delete;
    Jvm& operator=(const Jvm&) = delete;

    std::map<std::string, std::deque<Answer>> script;  // by method; the last answer of a method stays
    std::vector<std::string> calls;                    // methods of the connector with their arguments, "AttachCurrentThread", ...
    int lookUps = 0;                                   // of classes and methods, and strings and arrays made
    std::vector<std::string> faults;
    std::map<jobject, Value> locals;
    std::map<jobject, Value> globals;
    int chars = 0;         // buffers of GetStringUTFChars that are out
    bool pending = false;  // a Java exception
    bool attaches = true;
    std::string missing;  // a class or method that is not there
    // By method: what another thread does once, after a call has begun and before the JVM looks at the object.
    std::map<std::string, std::function<void()>> meanwhile;

    void answer(const std::string& method, const Answer& what) { script[method] = {what}; }  // from now on
    std::vector<std::string> takeCalls() { return std::exchange(calls, {}); }

    // "" when nothing is left over: no local reference, no buffer, no exception, no fault; `globals` of them.
    std::string leftOver(size_t globalCount);

    JavaVM vm;
    JNIEnv env;
};

}  // namespace fake
