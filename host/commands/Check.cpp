#include "host/commands/Check.h"

#include "host/configuration/Gate.h"
#include "host/connection/Plugin.h"
#include "host/database/Schema.h"
#include "host/process/Console.h"
#include "host/process/Failure.h"
#include "host/process/Output.h"

namespace host {

namespace {

// Only a configuration that is sound says what to connect to.
void checkDatabase(const Settings& settings, const std::string& place, CheckResult& result) {
    if (!hasSink(settings) || !result.problems.empty()) return;
    const RowType streamType(settings.streamName, streamColumns(settings));
    const std::string begin = place + ": ";
    for (const std::string& problem : databaseProblems(settings.sink, streamType))
        result.problems.push_back(begin + problem);
    if (result.problems.empty()) result.notes.push_back(begin + "note: the database can take the rows.");
}

}  // namespace

int checkConfiguration(const CheckOptions& options) {
    Output output;
    CheckResult result;
    if (const auto settings = examine(options.config, options.overrides, StreamSection::kNeeded, result)) {
        if (options.connect) checkDatabase(*settings, options.config, result);
        try {
            const Plugin plugin(pluginFor(*settings));
        } catch (const Failure& failure) {
            result.problems.push_back(options.config + ": host.plugin: " + failure.what());
        }
    }
    std::vector<std::string> lines = result.problems;
    if (lines.empty()) lines.push_back(options.config + ": the configuration has no problems.");
    lines.insert(lines.end(), result.notes.begin(), result.notes.end());
    std::string text;
    for (const std::string& line : lines) text += shown(line) + '\n';
    output.write(text);
    return result.problems.empty() ? kDone : kBadConfiguration;
}

}  // namespace host
