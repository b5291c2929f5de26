#include "host/connection/Plugin.h"

#include <dlfcn.h>

#include "host/configuration/Settings.h"
#include "host/process/Failure.h"
#include "host/process/Installation.h"
#include "host/values/Text.h"

namespace host {

namespace {

struct EntryPoint {
    const char* name;
    void (*assign)(Plugin& plugin, void* symbol);
};

template <auto kMember>
constexpr EntryPoint entryPoint(const char* name) {
    return {name, [](Plugin& plugin, void* symbol) {
                plugin.*kMember =
                    reinterpret_cast<std::remove_reference_t<decltype(plugin.*kMember)>>(symbol);
            }};
}

constexpr EntryPoint kEntryPoints[] = {
    entryPoint<&Plugin::createAdapter>("createAdapter"),
    entryPoint<&Plugin::deleteAdapter>("deleteAdapter"),
    entryPoint<&Plugin::setCallBackReference>("setCallBackReference"),
    entryPoint<&Plugin::setConnectionRowType>("setConnectionRowType"),
    entryPoint<&Plugin::setConnectionParams>("setConnectionParams"),
    entryPoint<&Plugin::setDiscovery>("setDiscovery"),
    entryPoint<&Plugin::canDiscover>("canDiscover"),
    entryPoint<&Plugin::reset>("reset"),
    entryPoint<&Plugin::start>("start"),
    entryPoint<&Plugin::getNext>("getNext"),
    entryPoint<&Plugin::commitTransaction>("commitTransaction"),
    entryPoint<&Plugin::stop>("stop"),
    entryPoint<&Plugin::hasError>("hasError"),
    entryPoint<&Plugin::getTotalRowsProcessed>("getTotalRowsProcessed"),
    entryPoint<&Plugin::getNumberOfGoodRows>("getNumberOfGoodRows"),
    entryPoint<&Plugin::getNumberOfBadRows>("getNumberOfBadRows"),
    entryPoint<&Plugin::getFieldNames>("getFieldNames"),
    entryPoint<&Plugin::getFieldTypes>("getFieldTypes"),
    entryPoint<&Plugin::getFieldKeys>("getFieldKeys"),
    entryPoint<&Plugin::getSampleRow>("getSampleRow"),
};

}  // namespace

std::string pluginFor(const Settings& settings, const std::string& asked) {
    if (!asked.empty()) return asked;
    return !settings.plugin.empty() ? settings.plugin : pluginFile().string();
}

Plugin::Plugin(const std::string& file) {
    void* library = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr)
        throw Failure(std::string("The plug-in cannot be loaded: ") + ::dlerror() + ".", kBadConfiguration);
    std::string missing;
    for (const EntryPoint& point : kEntryPoints) {
        void* symbol = ::dlsym(library, point.name);
        if (symbol == nullptr) addToList(missing, point.name);
        point.assign(*this, symbol);
    }
    if (!missing.empty())
        throw Failure("The plug-in " + file + " lacks the entry points " + missing + ".", kBadConfiguration);
}

}  // namespace host
