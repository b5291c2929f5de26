#include "host/Session.h"

#include "host/ClassPath.h"
#include "host/Console.h"
#include "host/Installation.h"
#include "host/Jvm.h"

namespace host {

Session::Session(const SessionOptions& options, StreamSection stream)
    : settings(loadSettings(options.config, options.overrides, stream)),
      rowType(settings.streamName, settings.columns) {
    const std::string path = classPath(settings);
    provideKelHome();
    if (std::string error; !loadCatalogue(catalogueFile(), error)) say(error);
    setErrorSink([this](const char* text) {
        ++errors;
        sayModified("error: ", text);
    });
    context.adapterName = settings.streamName;
    context.logLevel = options.logLevel.value_or(settings.logLevel);
    context.log = [](int level, const char* text) {
        sayModified("log " + std::to_string(level) + ": ", text);
    };
    startJvm(path, settings.jvmOptions);
}

Session::~Session() { setErrorSink({}); }

}  // namespace host
