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
    std::string name, signature;
};

void fault(const std::string& text) { jvm->faults.push_back(text); }

void enter(const char* function) {
    if (jvm->pending) fault(std::string(function) + " with an exception pending");
}

Value made(const std::string& type) { return std::make_shared<Object>(Object{type, "", {}, {}}); }

jobject newReference(std::map<jobject, Value>& table, const Value& value) {
    if (!value) return nullptr;
    const auto reference = reinterpret_cast<jobject>(nextReference += 8);
    return table[reference] = value, reference;
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

bool finds(const std::string& function, const std::string& name) {
    jvm->lookUps.push_back(function + "(" + name + ")");
    jvm->pending = jvm->pending || jvm->missing == name;
    return jvm->missing != name;
}

jmethodID getMethodId(JNIEnv*, jclass type, const char* name, const char* signature) {
    static std::map<std::string, MethodId> ids;
    valueOf(type);
    if (!finds("GetMethodID", name)) return nullptr;
    MethodId& id = ids[std::string(name) + signature] = {name, signature};
    return reinterpret_cast<jmethodID>(&id);
}

Answer callOn(const char* function, jobject object, jmethodID method, va_list arguments) {
    enter(function);
    if (!valueOf(object)) fault("a call on a null object");
    return call(method, arguments);
}

bool hasResult(jmethodID method, char type) { return method != nullptr && reinterpret_cast<MethodId*>(method)->signature.back() == type; }

jobject newArray(const char* function, jsize objects, jsize numbers) {
    enter(function);
    jvm->lookUps.emplace_back(function);
    const Value array = made("Array");
    array->elements.resize(static_cast<size_t>(objects));
    array->numbers.resize(static_cast<size_t>(numbers));
    return local(array);
}

Value* elementOf(jobjectArray array, jsize index, const char* function) {
    enter(function);
    auto& elements = valueOf(array)->elements;
    if (index >= 0 && index < std::ssize(elements)) return &elements[static_cast<size_t>(index)];
    fault(std::string(function) + " out of range");
    return nullptr;
}

JNINativeInterface_ nativeTable() {
    JNINativeInterface_ table{};
    table.FindClass = [](JNIEnv*, const char* name) {
        enter("FindClass");
        return static_cast<jclass>(finds("FindClass", name) ? local(made(name)) : nullptr);
    };
    table.GetMethodID = getMethodId;
    table.NewObjectV = [](JNIEnv*, jclass type, jmethodID constructor, va_list arguments) {
        return callOn("NewObject", type, constructor, arguments).throws ? nullptr : local(made(valueOf(type)->type));
    };
    table.CallObjectMethodV = [](JNIEnv*, jobject object, jmethodID method, va_list arguments) {
        const Answer answer = callOn("CallObjectMethod", object, method, arguments);
        // A void method called for an object leaves a word that is no reference.
        return hasResult(method, 'V') ? reinterpret_cast<jobject>(uintptr_t{answer.object != nullptr}) : local(answer.object);
    };
    table.CallBooleanMethodV = [](JNIEnv*, jobject object, jmethodID method, va_list arguments) {
        if (!hasResult(method, 'Z')) fault("CallBooleanMethod of a method that is not boolean");
        return callOn("CallBooleanMethod", object, method, arguments).flag;
    };
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
        valueOf(type);
        return static_cast<jobjectArray>(newArray("NewObjectArray", length, 0));
    };
    table.NewIntArray = [](JNIEnv*, jsize length) { return static_cast<jintArray>(newArray("NewIntArray", 0, length)); };
    table.GetObjectArrayElement = [](JNIEnv*, jobjectArray array, jsize index) {
        const Value* element = elementOf(array, index, "GetObjectArrayElement");
        return element != nullptr ? local(*element) : nullptr;
    };
    table.SetObjectArrayElement = [](JNIEnv*, jobjectArray array, jsize index, jobject value) {
        Value* element = elementOf(array, index, "SetObjectArrayElement");
        if (element != nullptr) *element = valueOf(value);
    };
    table.SetIntArrayRegion = [](JNIEnv*, jintArray array, jsize start, jsize length, const jint* from) {
        enter("SetIntArrayRegion");
        std::copy_n(from, length, valueOf(array)->numbers.begin() + start);
    };
    table.ExceptionOccurred = [](JNIEnv*) { return static_cast<jthrowable>(jvm->pending ? local(made("Throwable")) : nullptr); };
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

Jvm::~Jvm() { _globaljvm = nullptr; }

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
