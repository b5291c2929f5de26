#include "host/configuration/Gate.h"

#include <algorithm>

#include "host/process/ClassPath.h"
#include "host/process/Console.h"
#include "host/process/Failure.h"
#include "host/process/Provider.h"
#include "host/values/ModifiedUtf8.h"
#include "host/values/Text.h"

namespace host {

namespace {

struct Needs {
    Purpose purpose;
    StreamSection stream;
    const char* insteadOfInJvmBroker;  // null: one inside the process will do
};
constexpr Needs kNeeds[] = {
    {Purpose::kRun, StreamSection::kNeeded, nullptr},
    // What is sent stands in the file, down to the stream's name, so there may be no stream yet.
    {Purpose::kSend, StreamSection::kOptional,
     "send needs the URL of a broker of its own, such as tcp://localhost:61616, and to this one "
     "run --feed FILE sends."},
    {Purpose::kDiscover, StreamSection::kOptional,
     "discover needs the URL of a broker of its own, such as tcp://localhost:61616."},
};

void refuseInJvmBroker(const Settings& settings, const Needs& needs) {
    const std::string url = toUtf8(parameterOf(settings, params::kJndiUrl));
    if (needs.insteadOfInJvmBroker == nullptr || !provider::isInJvmBroker(url)) return;
    throw Failure("connection.jndiURL is " + inQuotes(url) +
                      ", a broker inside the process that uses it, which no other process sees; " +
                      needs.insteadOfInJvmBroker,
                  kBadConfiguration);
}

}  // namespace

std::optional<Settings> examine(const std::string& file, const std::vector<std::string>& overrides,
                                StreamSection stream, CheckResult& result) {
    std::optional<Settings> settings = readSettings(file, overrides, result.problems, stream);
    if (!settings) return settings;
    const std::string place = file + ": ", notePlace = place + "note: ";
    const CheckResult found = checkSettings(*settings);
    for (const std::string& problem : found.problems) result.problems.push_back(place + problem);
    for (const std::string& note : found.notes) result.notes.push_back(notePlace + note);
    try {
        classPath(settings->classPath, settings->addClassPath);
    } catch (const Failure& failure) {
        result.problems.push_back(place + failure.what());
    }
    return settings;
}

Settings soundSettings(const std::string& file, const std::vector<std::string>& overrides, Purpose purpose) {
    const Needs& needs = *std::find_if(std::begin(kNeeds), std::end(kNeeds),
                                       [purpose](const Needs& one) { return one.purpose == purpose; });
    CheckResult result;
    std::optional<Settings> settings = examine(file, overrides, needs.stream, result);
    // Ahead of the rest, which would tell how to set up such a broker.
    if (settings) refuseInJvmBroker(*settings, needs);
    const size_t count = result.problems.size();
    for (const std::string& problem : result.problems) say(problem);
    if (count > 0)
        throw Failure("The configuration has " + std::to_string(count) +
                          (count == 1 ? " problem" : " problems") + "; nothing was started.",
                      kBadConfiguration);
    return std::move(*settings);
}

}  // namespace host
