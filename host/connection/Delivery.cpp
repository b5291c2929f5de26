#include "host/connection/Delivery.h"

#include <iterator>

#include "host/process/Failure.h"
#include "host/process/JavaObject.h"
#include "host/values/ModifiedUtf8.h"
#include "jms/JniReferences.h"

namespace host {

namespace {

using contract::Method;

// Set by the connector on a message that is sent again.
constexpr char kReplayOf[] = "kelReplayOf";

// The connector's class, looked up once: it lives as long as the process.
class Door {
public:
    explicit Door(JNIEnv* env) {
        const LocalRef<jclass> found(env, env->FindClass(delivery::kClass));
        for (size_t i = 0; found && i < std::size(delivery::kMethods); ++i) {
            const Method& method = delivery::kMethods[i];
            ids_[i] = env->GetStaticMethodID(found.get(), method.name, method.signature);
            if (ids_[i] == nullptr) break;
        }
        if (env->ExceptionCheck() == JNI_TRUE) {
            env->ExceptionClear();
            throw Failure("The connector on the class path is of another version than this program.");
        }
        type = static_cast<jclass>(env->NewGlobalRef(found.get()));
    }

    jmethodID idOf(const Method& method) const { return ids_[&method - delivery::kMethods]; }

    jclass type;

private:
    jmethodID ids_[std::size(delivery::kMethods)] = {};
};

// One call of the connector; what it hands out is given back with it.
class Call {
public:
    explicit Call(const Method& method) : env_(attachThisThread()), method_(door().idOf(method)) {}

    template <typename... Arguments>
    bool isTrue(Arguments... arguments) {
        const jboolean answer = env_->CallStaticBooleanMethod(door().type, method_, arguments...);
        check();
        return answer == JNI_TRUE;
    }

    int number() {
        const jint answer = env_->CallStaticIntMethod(door().type, method_);
        check();
        return answer;
    }

    template <typename Reference, typename... Arguments>
    LocalRef<Reference> get(Arguments... arguments) {
        const jobject answer = env_->CallStaticObjectMethod(door().type, method_, arguments...);
        check();
        return {env_, static_cast<Reference>(answer)};
    }

    std::optional<std::string> text(size_t message) {
        const LocalRef<jstring> answer = get<jstring>(static_cast<jint>(message));
        return textOf(answer.get());
    }

    // Empty for a null array.
    Delivery::Values texts(jobjectArray array) {
        Delivery::Values values(array != nullptr ? static_cast<size_t>(env_->GetArrayLength(array)) : 0);
        for (size_t i = 0; i < values.size(); ++i) {
            const LocalRef<jstring> element(
                env_, static_cast<jstring>(env_->GetObjectArrayElement(array, static_cast<jsize>(i))));
            values[i] = textOf(element.get());
        }
        return values;
    }

    Delivery::Values textsNamed(const std::string& name) {
        const LocalRef<jstring> javaName(env_, env_->NewStringUTF(name.c_str()));
        check();
        return texts(get<jobjectArray>(javaName.get()).get());
    }

    std::optional<std::string> bytes(size_t message) {
        const LocalRef<jbyteArray> array = get<jbyteArray>(static_cast<jint>(message));
        if (!array) return std::nullopt;
        std::string bytes(static_cast<size_t>(env_->GetArrayLength(array.get())), '\0');
        env_->GetByteArrayRegion(array.get(), 0, static_cast<jsize>(bytes.size()),
                                 reinterpret_cast<jbyte*>(bytes.data()));
        return bytes;
    }

private:
    const Door& door() const {
        static const Door door(env_);
        return door;
    }

    std::optional<std::string> textOf(jstring text) {
        const UtfChars chars(env_, text);
        return chars ? std::optional<std::string>(chars.get()) : std::nullopt;
    }

    void check() const {
        const LocalRef<jthrowable> thrown(env_, env_->ExceptionOccurred());
        if (!thrown) return;
        env_->ExceptionClear();
        const LocalRef<jclass> shortage(env_, env_->FindClass("java/lang/OutOfMemoryError"));
        const bool isShortage = shortage && env_->IsInstanceOf(thrown.get(), shortage.get()) == JNI_TRUE;
        env_->ExceptionClear();
        if (isShortage)
            throw Failure(
                "The memory of the JVM does not suffice to keep a message (a larger heap, -Xmx in "
                "host.jvmOptions, would do); what was taken since the last settling comes again.");
        env_->Throw(thrown.get());
        env_->ExceptionDescribe();
        env_->ExceptionClear();
        throw Failure("The connector failed while it was asked about its messages; the reason stands above.");
    }

    JNIEnv* env_;
    jmethodID method_;
};

std::vector<std::string> withoutNone(const Delivery::Values& values) {
    std::vector<std::string> texts;
    texts.reserve(values.size());
    for (const auto& value : values) texts.push_back(toUtf8(value.value_or("")));
    return texts;
}

// Name, type and value of all there is to the message but its body, the kind first; empty for no message.
std::vector<std::string> described(size_t message) {
    Call describe(delivery::kDescribe);
    return withoutNone(describe.texts(describe.get<jobjectArray>(static_cast<jint>(message)).get()));
}

std::optional<std::string> inUtf8(const std::optional<std::string>& text) {
    return text ? std::optional(toUtf8(*text)) : std::nullopt;
}

}  // namespace

size_t Delivery::count() { return static_cast<size_t>(Call(delivery::kCount).number()); }

std::vector<std::string> Delivery::ids() {
    Call call(delivery::kTaken);
    return withoutNone(call.texts(call.get<jobjectArray>().get()));
}

std::vector<std::string> Delivery::replayOf() { return withoutNone(property(kReplayOf)); }

bool Delivery::isMessage(size_t message) { return !described(message).empty(); }

MessageCopy Delivery::copyOf(size_t message) {
    const std::vector<std::string> texts = described(message);
    MessageCopy copy;
    copy.body = Call(delivery::kBody).bytes(message);
    for (size_t i = 0; i + 2 < texts.size(); i += 3) {
        if (i == 0) {
            copy.kind = texts[2];
        } else {
            copy.envelope.push_back({texts[i], texts[i + 1], texts[i + 2]});
        }
    }
    return copy;
}

Delivery::Values Delivery::header(const std::string& name) {
    return Call(delivery::kHeader).textsNamed(name);
}

Delivery::Values Delivery::property(const std::string& name) {
    return Call(delivery::kProperty).textsNamed(name);
}

std::optional<std::string> Delivery::refusal(size_t message) {
    return inUtf8(Call(delivery::kRefusal).text(message));
}

std::optional<std::string> Delivery::firstElement(size_t message) {
    return inUtf8(Call(delivery::kFirstElement).text(message));
}

bool Delivery::isLost() { return Call(delivery::kIsLost).isTrue(); }
bool Delivery::settle() { return Call(delivery::kSettle).isTrue(); }
void Delivery::forget() { Call(delivery::kForget).isTrue(); }

}  // namespace host
