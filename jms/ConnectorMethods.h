// The Java connector as the bridge sees it: every class, method and JNI signature, once.
#pragma once

#include "jms/JmsUtils.h"

namespace contract {

inline constexpr char kClass[] = "com/morvex/kel/connectors/JmsConnector";
inline constexpr char kStringClass[] = "java/lang/String";

struct Method {
    const char* name;
    const char* signature;
};

inline constexpr Method kConstructor = {
    "<init>",
    "(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;Z[I[Ljava/lang/String;[Ljava/lang/String;"
    "Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;)V"};
inline constexpr Method kConnectForInput = {"connectForInput", "(Z)Z"};
inline constexpr Method kConnectForOutput = {"connectForOutput", "()Z"};
inline constexpr Method kInitInConverter = {"initInConverter", "(Ljava/lang/String;Ljava/lang/String;)Z"};
inline constexpr Method kInitOutConverter = {"initOutConverter", "(Ljava/lang/String;Ljava/lang/String;)Z"};
inline constexpr Method kDisconnect = {"disconnect", "()Z"};
inline constexpr Method kBrowseTextMessages = {"browseTextMessages", "()[Ljava/lang/String;"};
inline constexpr Method kBrowseObjectArrayMessages = {"browseObjectArrayMessages", "()[Ljava/lang/Object;"};
inline constexpr Method kBrowseCustomMessages = {"browseCustomMessages", "()[Ljava/lang/Object;"};

// Methods looked up where they are called.
inline constexpr Method kUncached[] = {
    kConstructor, kConnectForInput,    kConnectForOutput,          kInitInConverter,     kInitOutConverter,
    kDisconnect,  kBrowseTextMessages, kBrowseObjectArrayMessages, kBrowseCustomMessages};

// Methods called for every message: looked up by `init`, in this order.
struct CachedMethod {
    jmethodID JmsUtils::*id;
    Method method;
};

inline constexpr CachedMethod kCached[] = {
    {&JmsUtils::sendTextMessageId, {"sendTextMessage", "(Ljava/lang/String;[Ljava/lang/String;)Z"}},
    {&JmsUtils::sendObjectArrayMessageId, {"sendObjectArrayMessage", "([Ljava/lang/String;Z)Z"}},
    {&JmsUtils::sendCustomMessageId, {"sendCustomMessage", "([Ljava/lang/String;)Z"}},
    {&JmsUtils::receiveTextMessageId, {"receiveTextMessage", "()Ljava/lang/String;"}},
    {&JmsUtils::receiveObjectArrayMessageId, {"receiveObjectArrayMessage", "(Z)[Ljava/lang/String;"}},
    {&JmsUtils::receiveCustomMessageId, {"receiveCustomMessage", "()[Ljava/lang/String;"}},
    {&JmsUtils::commitTransactionId, {"commitTransaction", "()V"}},
};

}  // namespace contract
