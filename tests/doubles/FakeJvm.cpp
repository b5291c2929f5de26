#include "tests/doubles/FakeJvm.h"

#include <algorithm>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "toolkit/kel_java_native.h"

JavaVM* _globaljvm = nullptr;  // C linkage by its declaration

namespace fake {
namespace {

Jvm* jvm = nullptr;
uintptr_t nextReference = 0x1000;

struct MethodId {
    std::string name;
    std::string signature;
};

void fault(const std::string& text) { jvm->faults.push_back(text); }

void enter(const char* function) {
    if (jvm->pending) fault(std::string(function) + " with an exception pending");
}

jobject newReference(std::map<jobject, Value>& table, const Value& value) {
    if (!value) return nullptr;
    const auto reference = reinterpret_cast<jobject>(nextReference += 8);
    table[reference] = value;
    return reference;
}

jobject local(const Value& value) { return newReference(jvm->locals, value); }

Value valueOf(jobject reference) {
    if (reference == nullptr) return nullptr;
    for (auto* table : {&jvm->locals, &jvm->globals}) {
        if (const auto found = table->find(reference); found != table->end()) return found->second;
    }
    fault("a reference that is not alive");
    return nullptr;
}

void drop(std::map<jobject, Value>& table, jobject reference, const char* kind) {
    if (table.erase(reference) == 0) fault(std::string("a ") + kind + " reference deleted twice");
}

std::string shown(const Value& value) {
    if (!value) return "null";
    if (value->type == "String") return value->text;
    std::string text = "[";
    for (const Value& element : value->elements) text += shown(element) + " ";
    for (const int number : value->numbers) text += std::to_string(number) + " ";
    if (text.back() == ' ') text.pop_back();
    return text + "]";
}

std::string shownArguments(const std::string& signature, va_list arguments) {
    std::string text;
    for (size_t at = 1; signature[at] != ')'; ++at) {
        if (signature[at] == 'Z') {
            text += va_arg(arguments, int) != 0 ? "true," : "false,";
            continue;
        }
        while (signature[at] == '[') ++at;
        if (signature[at] == 'L') at = signature.find(';', at);
        text += shown(valueOf(va_arg(arguments, jobject))) + ",";
    }
    if (!text.empty()) text.pop_back();
    return text;
}

Answer call(jmethodID method, va_list arguments) {
    const auto* id = reinterpret_cast<MethodId*>(method);
    if (id == nullptr) {
        fault("a call of a method that is not there");
        return {};
    }
    jvm->calls.push_back(id->name + "(" + shownArguments(id->signature, arguments) + ")");
    auto& answers = jvm->script[id->name];
    if (answers.empty()) return {};
    const Answer answer = answers.front();
    if (answers.size() > 1) answers.pop_front();
    jvm->pending = jvm->pending || answer.throws;
    return answer.throws ? Answer{nullptr, JNI_FALSE, true} : answer;
}

jclass findClass(JNIEnv*, const char* name) {
    enter("FindClass");
    jvm->lookUps.push_back(std::string("FindClass(") + name + ")");
    if (jvm->missing == name) {
        jvm->pending = true;
        return nullptr;
    }
    return static_cast<jclass>(local(std::make_shared<Object>(Object{name, "", {}, {}})));
}

jmethodID getMethodId(JNIEnv*, jclass type, const char* name, const char* signature) {
    static std::map<std::string, MethodId> ids;
    valueOf(type);
    jvm->lookUps.push_back(std::string("GetMethodID(") + name + ")");
    if (jvm->missing == name) {
        jvm->pending = true;
        return nullptr;
    }
    MethodId& id = ids[std::string(name) + signature];
    id = {name, signature};
    return reinterpret_cast<jmethodID>(&id);
}

jobject newObjectV(JNIEnv*, jclass type, jmethodID constructor, va_list arguments) {
    enter("NewObject");
    const Answer answer = call(constructor, arguments);
    return answer.throws ? nullptr : local(std::make_shared<Object>(Object{valueOf(type)->type, "", {}, {}}));
}

jobject callObjectV(JNIEnv*, jobject object, jmethodID method, va_list arguments) {
    enter("CallObjectMethod");
    if (!valueOf(object)) fault("a call on a null object");
    const Answer answer = call(method, arguments);
    // A void method called for an object leaves a word that is no reference.
    if (reinterpret_cast<MethodId*>(method)->signature.ends_with("V")) {
        return reinterpret_cast<jobject>(answer.object ? uintptr_t{1} : uintptr_t{0});
    }
    return local(answer.object);
}

jboolean callBooleanV(JNIEnv*, jobject object, jmethodID method, va_list arguments) {
    enter("CallBooleanMethod");
    if (!valueOf(object)) fault("a call on a null object");
    const auto* id = reinterpret_cast<MethodId*>(method);
    if (id != nullptr && !id->signature.ends_with("Z")) fault(id->name + " is no boolean method");
    return call(method, arguments).flag;
}

Value arrayAt(jobjectArray array, jsize index, const char* function) {
    const Value value = valueOf(array);
    if (index >= 0 && index < static_cast<jsize>(value->elements.size())) return value;
    fault(std::string(function) + " out of range");
    return nullptr;
}

JNINativeInterface_ nativeTable() {
    JNINativeInterface_ table{};
    table.FindClass = findClass;
    table.GetMethodID = getMethodId;
    table.NewObjectV = newObjectV;
    table.CallObjectMethodV = callObjectV;
    table.CallBooleanMethodV = callBooleanV;
    table.NewGlobalRef = [](JNIEnv*, jobject object) { return newReference(jvm->globals, valueOf(object)); };
    table.DeleteGlobalRef = [](JNIEnv*, jobject object) { drop(jvm->globals, object, "global"); };
    table.DeleteLocalRef = [](JNIEnv*, jobject object) { drop(jvm->locals, object, "local"); };
    table.NewStringUTF = [](JNIEnv*, const char* text) {
        enter("NewStringUTF");
        jvm->lookUps.push_back(std::string("NewStringUTF(") + text + ")");
        return static_cast<jstring>(local(string(text)));
    };
    table.GetStringUTFChars = [](JNIEnv*, jstring text, jboolean*) -> const char* {
        enter("GetStringUTFChars");
        ++jvm->chars;
        return strdup(valueOf(text)->text.c_str());
    };
    table.ReleaseStringUTFChars = [](JNIEnv*, jstring text, const char* chars) {
        valueOf(text);
        --jvm->chars;
        free(const_cast<char*>(chars));
    };
    table.GetArrayLength = [](JNIEnv*, jarray array) {
        enter("GetArrayLength");
        return static_cast<jsize>(valueOf(array)->elements.size());
    };
    table.NewObjectArray = [](JNIEnv*, jsize length, jclass type, jobject) {
        enter("NewObjectArray");
        jvm->lookUps.emplace_back("NewObjectArray");
        valueOf(type);
        const auto made = std::make_shared<Object>(Object{"Array", "", {}, {}});
        made->elements.resize(static_cast<size_t>(length));
        return static_cast<jobjectArray>(local(made));
    };
    table.GetObjectArrayElement = [](JNIEnv*, jobjectArray array, jsize index) {
        enter("GetObjectArrayElement");
        const Value owner = arrayAt(array, index, "GetObjectArrayElement");
        return owner ? local(owner->elements[static_cast<size_t>(index)]) : nullptr;
    };
    table.SetObjectArrayElement = [](JNIEnv*, jobjectArray array, jsize index, jobject element) {
        enter("SetObjectArrayElement");
        const Value owner = arrayAt(array, index, "SetObjectArrayElement");
        if (owner) owner->elements[static_cast<size_t>(index)] = valueOf(element);
    };
    table.NewIntArray = [](JNIEnv*, jsize length) {
        enter("NewIntArray");
        jvm->lookUps.emplace_back("NewIntArray");
        const auto made = std::make_shared<Object>(Object{"int[]", "", {}, {}});
        made->numbers.resize(static_cast<size_t>(length));
        return static_cast<jintArray>(local(made));
    };
    table.SetIntArrayRegion = [](JNIEnv*, jintArray array, jsize start, jsize length, const jint* from) {
        enter("SetIntArrayRegion");
        std::copy_n(from, length, valueOf(array)->numbers.begin() + start);
    };
    table.ExceptionOccurred = [](JNIEnv*) -> jthrowable {
        return jvm->pending ? static_cast<jthrowable>(local(std::make_shared<Object>(Object{"Throwable", "", {}, {}}))) : nullptr;
    };
    table.ExceptionDescribe = [](JNIEnv*) { jvm->calls.emplace_back("ExceptionDescribe"); };
    table.ExceptionClear = [](JNIEnv*) { jvm->pending = false; };
    return table;
}

JNIInvokeInterface_ invokeTable() {
    JNIInvokeInterface_ table{};
    table.AttachCurrentThread = [](JavaVM*, void** env, void* arguments) -> jint {
        jvm->calls.emplace_back(arguments == nullptr ? "AttachCurrentThread" : "AttachCurrentThread with arguments");
        if (jvm->attaches) *env = &jvm->env;
        return jvm->attaches ? JNI_OK : JNI_ERR;
    };
    return table;
}

}  // namespace

Value string(const std::string& text) { return std::make_shared<Object>(Object{"String", text, {}, {}}); }

Value array(const std::vector<Value>& elements) { return std::make_shared<Object>(Object{"Array", "", elements, {}}); }

Value array(const std::vector<std::optional<std::string>>& elements) {
    std::vector<Value> values;
    for (const auto& element : elements) values.push_back(element ? string(*element) : nullptr);
    return array(values);
}

Jvm::Jvm() {
    static const JNINativeInterface_ native = nativeTable();
    static const JNIInvokeInterface_ invoke = invokeTable();
    env.functions = &native;
    vm.functions = &invoke;
    jvm = this;
    _globaljvm = &vm;
}

Jvm::~Jvm() {
    _globaljvm = nullptr;
    jvm = nullptr;
}

void Jvm::answer(const std::string& method, const Answer& what) { script[method] = {what}; }

std::vector<std::string> Jvm::takeCalls() { return std::exchange(calls, {}); }

std::string Jvm::leftOver(size_t globalCount) {
    std::string text;
    for (const std::string& what : faults) text += what + "; ";
    if (!locals.empty()) text += std::to_string(locals.size()) + " local references; ";
    if (globals.size() != globalCount) text += std::to_string(globals.size()) + " global references; ";
    if (chars != 0) text += std::to_string(chars) + " character buffers; ";
    if (pending) text += "a pending exception; ";
    return text;
}

}  // namespace fake
