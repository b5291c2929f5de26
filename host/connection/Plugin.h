// An adapter plug-in, loaded: its entry points by name.
#pragma once

#include <string>

#include "adapter/EntryPoints.h"

namespace host {

struct Settings;

// The file of the plug-in to load: the one asked for, else the configured one, else the one beside this
// program. Throws Failure.
std::string pluginFor(const Settings& settings, const std::string& asked = "");

class Plugin {
public:
    // Throws Failure when the file cannot be loaded, or lacks entry points, all of which it names.
    explicit Plugin(const std::string& file);
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    decltype(&::createAdapter) createAdapter = nullptr;
    decltype(&::deleteAdapter) deleteAdapter = nullptr;
    decltype(&::setCallBackReference) setCallBackReference = nullptr;
    decltype(&::setConnectionRowType) setConnectionRowType = nullptr;
    decltype(&::setConnectionParams) setConnectionParams = nullptr;
    decltype(&::setDiscovery) setDiscovery = nullptr;
    decltype(&::canDiscover) canDiscover = nullptr;
    decltype(&::reset) reset = nullptr;
    decltype(&::start) start = nullptr;
    decltype(&::getNext) getNext = nullptr;
    decltype(&::commitTransaction) commitTransaction = nullptr;
    decltype(&::stop) stop = nullptr;
    decltype(&::hasError) hasError = nullptr;
    decltype(&::getTotalRowsProcessed) getTotalRowsProcessed = nullptr;
    decltype(&::getNumberOfGoodRows) getNumberOfGoodRows = nullptr;
    decltype(&::getNumberOfBadRows) getNumberOfBadRows = nullptr;
    decltype(&::getFieldNames) getFieldNames = nullptr;
    decltype(&::getFieldTypes) getFieldTypes = nullptr;
    decltype(&::getFieldKeys) getFieldKeys = nullptr;
    decltype(&::getSampleRow) getSampleRow = nullptr;
};

}  // namespace host
