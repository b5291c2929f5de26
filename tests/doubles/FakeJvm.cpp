#include "tests/doubles/FakeJvm.h"

#include <cstdarg>
#include <cstdlib>
#include <cstring>

#include "toolkit/kel_java_native.h"

JavaVM* _globaljvm = nullptr;  // C linkage by its declaration

namespace fake {
namespace {

Jvm* jvm = nullptr;

struct MethodId {
    std::string name, signature;
};

void fault(const std::string& text) { jvm->faults.push_back(text); }

void enter() {
    if (jvm->pending) fault("a call with an exception pending");
}

jobject newReference(std::map<jobject, Value>& table, const Value& value) {
    static uintptr_t last = 0x1000;
    if (!value) return nullptr;
    const auto reference = reinterpret_cast<jobject>(last += 8);
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

void drop(std::map<jobject, Value>& table, jobject reference) {
    if (table.erase(reference) == 0) fault("a reference deleted twice");
}

std::string shown(const Value& value) {
    if (!value) return "null";
    std::string text = value->text;
    for (const Value& element : value->elements) text += shown(element) + " ";
    if (!value->elements.empty()) text.pop_back();
    return text + (value->text == "[" ? "]" : "");
}

std::string shownArguments(const std::string& signature, va_list arguments) {
    std::string text;
    for (size_t at = 1; signature[at] != ')'; ++at) {
        const char type = signature[at];
        if (type == '[') continue;
        if (type == 'L') at = signature.find(';', at);
        text += type != 'Z' ? shown(valueOf(va_arg(arguments, jobject))) : va_arg(arguments, int) != 0 ? "true" : "false";
        text += ',';
    }
    return text.substr(0, text.size() - !text.empty());
}

bool finds(const std::string& name) {
    ++jvm->lookUps;
    jvm->pending = jvm->pending || jvm->missing == name;
    return jvm->missing != name;
}

jmethodID getMethodId(JNIEnv*, jclass type, const char* name, const char* signature) {
    static std::map<std::string, MethodId> ids;
    valueOf(type);
    MethodId& id = ids[std::string(name) + signature] = {name, signature};
    return finds(name) ? reinterpret_cast<jmethodID>(&id) : nullptr;
}

Answer call(jobject object, jmethodID method, va_list arguments) {
    enter();
    const auto* id = reinterpret_cast<MethodId*>(method);
    if (id == nullptr) return fault("a call of a method that is not there"), Answer{};
    if (const auto other = jvm->meanwhile.extract(id->name)) other.mapped()();
    if (!valueOf(object)) return fault("a call on null"), Answer{};
    jvm->calls.push_back(id->name + "(" + shownArguments(id->signature, arguments) + ")");
    auto& answers = jvm->script[id->name];
    const Answer answer = answers.empty() ? Answer{} : answers.front();
    if (answers.size() > 1) answers.pop_front();
    jvm->pending = jvm->pending || answer.throws;
    return answer.throws ? Answer{nullptr, JNI_FALSE, true} : answer;
}

jobject newArray(jsize length) {
    enter();
    ++jvm->lookUps;
    return local(array(std::vector<Value>(static_cast<size_t>(length))));
}

// Where an element stands; for one that is out of range, somewhere else.
Value& elementOf(jobject array, jsize index) {
    static Value none;
    enter();
    auto& elements = valueOf(array)->elements;
    if (index >= 0 && index < std::ssize(elements)) return elements[static_cast<size_t>(index)];
    return fault("an index out of range"), none;
}

JNINativeInterface_ nativeTable() {
    JNINativeInterface_ table{};
    table.FindClass = [](JNIEnv*, const char* name) {
        enter();
        return static_cast<jclass>(finds(name) ? local(string(name)) : nullptr);
    };
    table.GetMethodID = getMethodId;
    table.NewObjectV = [](JNIEnv*, jclass type, jmethodID constructor, va_list arguments) {
        return call(type, constructor, arguments).throws ? nullptr : local(string("object"));
    };
    table.CallObjectMethodV = [](JNIEnv*, jobject object, jmethodID method, va_list arguments) {
        const Answer answer = call(object, method, arguments);
        // A void method called for an object leaves a word that is no reference.
        const bool isVoid = reinterpret_cast<MethodId*>(method)->signature.back() == 'V';
        return isVoid ? reinterpret_cast<jobject>(uintptr_t{answer.object != nullptr}) : local(answer.object);
    };
    table.CallBooleanMethodV = [](JNIEnv*, jobject object, jmethodID method, va_list arguments) {
        return call(object, method, arguments).flag;
    };
    table.NewGlobalRef = [](JNIEnv*, jobject object) { return newReference(jvm->globals, valueOf(object)); };
    table.NewLocalRef = [](JNIEnv*, jobject object) { return local(valueOf(object)); };
    table.DeleteGlobalRef = [](JNIEnv*, jobject object) { drop(jvm->globals, object); };
    table.DeleteLocalRef = [](JNIEnv*, jobject object) { drop(jvm->locals, object); };
    table.NewStringUTF = [](JNIEnv*, const char* text) {
        enter();
        ++jvm->lookUps;
        return static_cast<jstring>(local(string(text)));
    };
    table.GetStringUTFChars = [](JNIEnv*, jstring text, jboolean*) -> const char* {
        enter();
        ++jvm->chars;
        return strdup(valueOf(text)->text.c_str());
    };
    table.ReleaseStringUTFChars = [](JNIEnv*, jstring text, const char* chars) {
        valueOf(text);
        --jvm->chars;
        free(const_cast<char*>(chars));
    };
    table.GetArrayLength = [](JNIEnv*, jarray array) {
        enter();
        return static_cast<jsize>(valueOf(array)->elements.size());
    };
    table.NewObjectArray = [](JNIEnv*, jsize length, jclass type, jobject) {
        valueOf(type);
        return static_cast<jobjectArray>(newArray(length));
    };
    table.NewIntArray = [](JNIEnv*, jsize length) { return static_cast<jintArray>(newArray(length)); };
    table.GetObjectArrayElement = [](JNIEnv*, jobjectArray array, jsize index) { return local(elementOf(array, index)); };
    table.SetObjectArrayElement = [](JNIEnv*, jobjectArray array, jsize index, jobject value) { elementOf(array, index) = valueOf(value); };
    table.SetIntArrayRegion = [](JNIEnv*, jintArray array, jsize start, jsize length, const jint* from) {
        for (jsize i = 0; i < length; ++i) elementOf(array, start + i) = string(std::to_string(from[i]));
    };
    table.ExceptionOccurred = [](JNIEnv*) { return static_cast<jthrowable>(jvm->pending ? local(string("thrown")) : nullptr); };
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

Value string(const std::string& text) { return std::make_shared<Object>(Object{text, {}}); }

Value array(const std::vector<Value>& elements) { return std::make_shared<Object>(Object{"[", elements}); }

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
