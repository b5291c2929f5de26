#include "host/process/Provider.h"

#include <algorithm>

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

constexpr Option kForSink[] = {
    {"jms.redeliveryPolicy.maximumRedeliveries", "-1"},
    {"jms.checkForDuplicates", "false"},
};

constexpr size_t kNone = std::string_view::npos;

// Behind the parenthesis that closes the one at `open`.
size_t behindParentheses(std::string_view url, size_t open) {
    int depth = 0;
    for (size_t at = open; at < url.size(); ++at) {
        depth += url[at] == '(' ? 1 : url[at] == ')' ? -1 : 0;
        if (depth == 0) return at + 1;
    }
    return url.size();
}

struct Address {
    size_t begin;  // behind the scheme
    size_t end;    // where the URL's own options begin; none when they cannot
};

Address addressOf(std::string_view url) {
    constexpr std::string_view kSlashes = "//";
    size_t begin = url.find(':') + 1;
    const bool hasSlashes = url.substr(begin).starts_with(kSlashes);
    if (hasSlashes) begin += kSlashes.size();
    if (url.substr(begin).starts_with('('))
        return {begin, std::min(url.find('?', behindParentheses(url, begin)), url.size())};
    const size_t end = std::min(url.find('?', begin), url.size());
    const bool isAddress = hasSlashes && url.substr(begin, end - begin).find("://") == kNone;
    return {begin, isAddress ? end : kNone};
}

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

std::string optionBeginningWith(std::string_view url, std::string_view key) {
    const size_t end = addressOf(url).end;
    for (size_t at = std::min(end, url.size()); at < url.size();) {
        const size_t next = std::min(url.find('&', at + 1), url.size());
        const std::string_view option = url.substr(at + 1, next - at - 1);
        if (option.starts_with(key)) return std::string(option);
        at = next;
    }
    return {};
}

std::string withOption(const std::string& url, const std::string& key, const std::string& value) {
    if (!optionBeginningWith(url, key + '=').empty()) return url;
    const Address address = addressOf(url);
    std::string result = url;
    if (address.end == kNone) result = url.substr(0, address.begin) + '(' + url.substr(address.begin) + ')';
    const size_t begin = addressOf(result).end;
    const char* separator = begin == result.size()                                ? "?"
                            : begin + 1 == result.size() || result.ends_with('&') ? ""
                                                                                  : "&";
    return result + separator + key + '=' + value;
}

bool reconnectsByItself(std::string_view url) {
    return url.starts_with("failover") &&
           optionBeginningWith(url, "maxReconnectAttempts=") != "maxReconnectAttempts=0";
}

std::span<const Option> optionsForSink() { return kForSink; }

bool isStoreLocked(std::string_view exception) {
    return exception.find("not be locked") != std::string_view::npos;
}

}  // namespace host::provider
