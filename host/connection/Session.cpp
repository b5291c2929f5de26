#include "host/connection/Session.h"

#include "host/process/ClassPath.h"
#include "host/process/Console.h"
#include "host/process/Installation.h"
#include "host/process/Jvm.h"

namespace host {

Session::Session(Settings sound, std::optional<int> logLevel)
    : settings(std::move(sound)), rowType(settings.streamName, settings.columns) {
    const std::string path = classPath(settings.classPath, settings.addClassPath);
    provideKelHome();
    if (std::string error; !loadCatalogue(catalogueFile(), error)) say(error);
    setErrorSink([this](const char* text) {
        ++errors;
        sayModified("error: ", text);
    });
    context.adapterName = settings.streamName;
    context.logLevel = logLevel.value_or(settings.logLevel);
    context.log = [](int level, const char* text) {
        sayModified("log " + std::to_string(level) + ": ", text);
    };
    startJvm(path, settings.jvmOptions);
}

Session::~Session() { setErrorSink({}); }

}  // namespace host
