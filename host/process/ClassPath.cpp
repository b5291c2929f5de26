#include "host/process/ClassPath.h"

#include <algorithm>
#include <filesystem>
#include <span>

#include "host/process/Failure.h"
#include "host/process/Installation.h"
#include "host/process/Provider.h"
#include "host/values/Text.h"

namespace fs = std::filesystem;

namespace host {

namespace {

constexpr char kConnector[] = "kel-connectors.jar";

// What the converter of the examples reads with.
constexpr provider::Jar kOtherJars[] = {{"jackson-core.jar", "libjackson2-core-java"}};

std::string packageOf(const std::string& file) {
    for (const auto& jars :
         {provider::clientJars(), provider::storeJars(), std::span<const provider::Jar>(kOtherJars)}) {
        for (const provider::Jar& jar : jars) {
            if (file == jar.file) return jar.package;
        }
    }
    return {};
}

void add(std::vector<std::string>& names, std::span<const provider::Jar> jars) {
    for (const provider::Jar& jar : jars) names.emplace_back(jar.file);
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

std::string classPath(const std::vector<std::string>& jars, const std::vector<std::string>& added) {
    std::vector<std::string> names;
    const auto isConnector = [](const std::string& name) { return fs::path(name).filename() == kConnector; };
    if (std::none_of(jars.begin(), jars.end(), isConnector)) names.emplace_back(kConnector);
    names.insert(names.end(), jars.begin(), jars.end());
    if (jars.empty()) add(names, provider::clientJars());
    names.insert(names.end(), added.begin(), added.end());
    return located(names);
}

std::string brokerClassPath(BrokerStore store) {
    std::vector<std::string> names;
    add(names, provider::clientJars());
    if (store == BrokerStore::kFiles) add(names, provider::storeJars());
    return located(names);
}

}  // namespace host
