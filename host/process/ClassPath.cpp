#include "host/process/ClassPath.h"

#include <algorithm>
#include <filesystem>
#include <span>

#include "host/configuration/ConfigurationFile.h"
#include "host/process/Failure.h"
#include "host/process/Installation.h"
#include "host/values/Text.h"

namespace fs = std::filesystem;

namespace host {

namespace {

constexpr char kConnector[] = "kel-connectors.jar";

struct Jar {
    const char* file;
    const char* package;
};

// What an ActiveMQ client over tcp and vm, with a broker in the JVM, needs at run time. slf4j-nop keeps the
// client from warning that it has nowhere to log to.
constexpr Jar kProviderJars[] = {
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
constexpr Jar kOtherJars[] = {{"jackson-core.jar", "libjackson2-core-java"}};

std::string packageOf(const std::string& file) {
    for (const auto& jars : {std::span<const Jar>(kProviderJars), std::span<const Jar>(kStoreJars),
                             std::span<const Jar>(kOtherJars)}) {
        for (const Jar& jar : jars) {
            if (file == jar.file) return jar.package;
        }
    }
    return {};
}

template <typename Jars>
void add(std::vector<std::string>& names, const Jars& jars) {
    for (const Jar& jar : jars) names.emplace_back(jar.file);
}

std::string located(const std::vector<std::string>& names) {
    std::string path;
    std::string missing;
    for (const std::string& name : names) {
        const bool isBare = name.find('/') == std::string::npos;
        const fs::path file = isBare ? findJar(name) : fs::path(name);
        if (!isThere(file)) {
            const std::string package = packageOf(file.filename().string());
            addToList(missing, name);
            if (!package.empty()) missing += " (Debian package " + package + ")";
        }
        addToList(path, file.string(), ":");
    }
    if (!missing.empty()) throw Failure("The Java class path lacks " + missing + ".", kBadConfiguration);
    return path;
}

}  // namespace

std::string classPath(const Settings& settings) {
    std::vector<std::string> names;
    const auto isConnector = [](const std::string& name) { return fs::path(name).filename() == kConnector; };
    if (std::none_of(settings.classPath.begin(), settings.classPath.end(), isConnector))
        names.emplace_back(kConnector);
    names.insert(names.end(), settings.classPath.begin(), settings.classPath.end());
    if (settings.classPath.empty()) add(names, kProviderJars);
    names.insert(names.end(), settings.addClassPath.begin(), settings.addClassPath.end());
    return located(names);
}

std::string brokerClassPath(bool store) {
    std::vector<std::string> names;
    add(names, kProviderJars);
    if (store) add(names, kStoreJars);
    return located(names);
}

}  // namespace host
