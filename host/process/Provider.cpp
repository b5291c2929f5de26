#include "host/process/Provider.h"

namespace host::provider {

namespace {

// slf4j-nop keeps the client from warning that it has nowhere to log to.
constexpr Jar kClientJars[] = {
    {"activemq-client.jar", "libactivemq-java"},
    {"activemq-broker.jar", "libactivemq-java"},
    {"geronimo-jms_1.1_spec.jar", "libgeronimo-jms-1.1-spec-java"},
    {"geronimo-j2ee-management-1.1-spec.jar", "libgeronimo-j2ee-management-1.1-spec-java"},
    {"hawtbuf.jar", "libhawtbuf-java"},
    {"slf4j-api.jar", "libslf4j-java"},
    {"slf4j-nop.jar", "libslf4j-java"},
};
constexpr Jar kStoreJars[] = {
    {"activemq-kahadb-store.jar", "libactivemq-java"},
    {"activemq-protobuf.jar", "libactivemq-protobuf-java"},
};

// The provider's own list works by packages; the JVM's filter is narrower.
constexpr char kAdmittedPackages[] =
    "-Dorg.apache.activemq.SERIALIZABLE_PACKAGES=java.lang,java.math,java.util";

// An object message is deserialised by the provider before anybody can look at it, so the JVM itself admits
// no classes but values, arrays of them, and lists; some lists are written and read as others.
constexpr const char* kAdmittedClasses[] = {
    "java.lang.Object",
    "java.lang.String",
    "java.lang.Number",
    "java.lang.Byte",
    "java.lang.Short",
    "java.lang.Integer",
    "java.lang.Long",
    "java.lang.Float",
    "java.lang.Double",
    "java.lang.Boolean",
    "java.math.BigDecimal",
    "java.math.BigInteger",
    "java.util.Date",
    "java.util.ArrayList",
    "java.util.LinkedList",
    "java.util.Vector",
    "java.util.Arrays$ArrayList",
    "java.util.CollSer",
    "java.util.ImmutableCollections$List12",
    "java.util.ImmutableCollections$ListN",
    "java.util.Collections$EmptyList",
    "java.util.Collections$SingletonList",
    "java.util.Collections$UnmodifiableCollection",
    "java.util.Collections$UnmodifiableList",
    "java.util.Collections$UnmodifiableRandomAccessList",
};

}  // namespace

std::span<const Jar> clientJars() { return kClientJars; }
std::span<const Jar> storeJars() { return kStoreJars; }

bool isOfStore(std::string_view jar) { return jar.find("kahadb") != std::string_view::npos; }

std::vector<std::string> admittedClasses() {
    std::string filter = "-Djdk.serialFilter=maxdepth=10;maxarray=100000";
    for (const char* name : kAdmittedClasses) filter.append(";").append(name);
    return {kAdmittedPackages, filter + ";!*"};
}

bool isContextFactory(std::string_view javaClass) { return javaClass.starts_with("org.apache.activemq"); }

bool isInJvmBroker(std::string_view url) {
    constexpr std::string_view kScheme = "vm:";
    constexpr std::string_view kBeforeUrl =
        "(,: ";  // as in failover:(tcp://a,vm://b); a host may be named vm
    for (size_t at = url.find(kScheme); at != std::string_view::npos; at = url.find(kScheme, at + 1)) {
        if (at == 0 || kBeforeUrl.find(url[at - 1]) != std::string_view::npos) return true;
    }
    return false;
}

bool keepsFiles(std::string_view url) {
    return isInJvmBroker(url) && url.find("broker.persistent=false") == std::string_view::npos;
}

bool isStoreLocked(std::string_view exception) {
    return exception.find("not be locked") != std::string_view::npos;
}

}  // namespace host::provider
