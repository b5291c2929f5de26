#include "host/connection/Session.h"

#include <algorithm>

#include "host/configuration/InForce.h"
#include "host/connection/AdapterErrors.h"
#include "host/process/ClassPath.h"
#include "host/process/Console.h"
#include "host/process/Installation.h"
#include "host/process/Jvm.h"

namespace host {

namespace {

constexpr int kErrorLevel = 3;  // of the adapter's log

}  // namespace

Session::Session(Settings sound, std::optional<int> logLevel)
    : settings(std::move(sound)), rowType(settings.streamName, settings.columns) {
    const std::string path = classPath(settings.classPath, settings.addClassPath);
    provideKelHome();
    if (std::string error; !loadCatalogue(catalogueFile(), error)) say(error);
    setErrorSink([this](const char* text, const RowFault* fault) {
        ++errors;
        if (HeardErrors* heard = HeardErrors::ofThisThread()) {
            heard->errors.push_back({text, fault != nullptr, fault != nullptr ? fault->column : ""});
        } else {
            tellError(text);
        }
    });
    context.adapterName = settings.streamName;
    const int shown = logLevel.value_or(settings.logLevel);
    context.logLevel = std::max(shown, kErrorLevel);
    context.log = [shown](int level, const char* text) {
        HeardErrors* heard = HeardErrors::ofThisThread();
        if (heard != nullptr && level <= kErrorLevel) heard->logged.emplace_back(text);
        if (level <= shown) sayModified("log " + std::to_string(level) + ": ", text);
    };
    startJvm(path, settings.jvmOptions);
    for (const std::string& property : connectorProperties(settings)) setJavaProperty(property);
}

Session::~Session() { setErrorSink({}); }

}  // namespace host
