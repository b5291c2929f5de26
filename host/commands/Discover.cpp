#include "host/commands/Discover.h"

#include <cstdlib>
#include <memory>

#include "host/configuration/Gate.h"
#include "host/connection/LoadedAdapter.h"
#include "host/discovery/Explanation.h"
#include "host/discovery/Proposal.h"
#include "host/discovery/Report.h"
#include "host/discovery/SecondLook.h"
#include "host/process/Console.h"
#include "host/process/Failure.h"
#include "host/process/Jvm.h"
#include "host/process/Output.h"
#include "host/process/Signals.h"
#include "host/values/ModifiedUtf8.h"
#include "host/values/Text.h"

namespace host {

namespace {

// The name of a table that the entry points ask for and this adapter does not use.
constexpr char kNoTable[] = "";

std::string parameter(const Session& session, const char* name) {
    return toUtf8(parameterOf(session.settings, name));
}

// Takes over what an entry point handed out: the strings are array-new buffers, the array is malloc's.
std::vector<std::string> take(char** texts, int count) {
    std::vector<std::string> taken;
    for (int i = 0; i < count; ++i) {
        const std::unique_ptr<char[]> text(texts[i]);
        taken.emplace_back(text.get());
    }
    std::free(texts);
    return taken;
}

std::vector<bool> takeKeys(const LoadedAdapter& adapter) {
    bool* flags = nullptr;
    const int count = adapter.plugin().getFieldKeys(adapter.handle(), &flags, kNoTable, nullptr);
    std::vector<bool> keys;
    if (count > 0) keys.assign(flags, flags + count);
    std::free(flags);
    return keys;
}

[[noreturn]] void failAsStopped() { throw Failure(kStoppedEarly); }

// A configured stream's name is what discovery takes too; --stream only names the proposal.
std::string elementAskedFor(const Session& session) {
    const Settings& settings = session.settings;
    const jmsin::DataFormatInfo* info = dataFormatOf(settings);
    if (info == nullptr || !info->isByNames || !flagOf(settings, params::kMatchStreamName)) return {};
    return " with an element named " + inQuotes(toUtf8(settings.streamName)) + " (matchStreamName)";
}

[[noreturn]] void fail(const Session& session, const LoadedAdapter& adapter, bool hasSamples = false) {
    if (adapter.isStopped()) failAsStopped();
    if (hasSamples)
        throw Failure(
            "The samples from " + inQuotes(parameter(session, params::kDestinationName)) +
            " hold nothing that could be a column, so nothing is proposed: in XML the first message that "
            "parses has no attributes, in FIX no message has a named field besides its frame.");
    throw Failure(
        "No message of " + inQuotes(parameter(session, params::kDestinationName)) +
        " could be taken for a sample, so nothing is proposed: none waits there, or none is of the format " +
        parameter(session, params::kDataFormat) + elementAskedFor(session) + ", or the reason stands above.");
}

// The first of the entry points discovers, the others answer from what it found.
Discovery discover(const Session& session, const LoadedAdapter& adapter) {
    const Plugin& plugin = adapter.plugin();
    Discovery found;
    char** texts = nullptr;
    int count = plugin.getFieldNames(adapter.handle(), &texts, kNoTable, nullptr);
    if (count < 0) fail(session, adapter);
    found.names = take(texts, count);
    texts = nullptr;
    count = plugin.getFieldTypes(adapter.handle(), &texts, kNoTable, nullptr);
    found.types = take(texts, count);
    found.keys = takeKeys(adapter);
    for (int row = 0;; ++row) {
        // A row index behind the last leaves it untouched; a row without fields does not.
        texts = nullptr;
        count = plugin.getSampleRow(adapter.handle(), &texts, kNoTable, nullptr, row);
        if (texts == nullptr) break;
        found.samples.push_back(take(texts, count));
    }
    if (found.types.size() != found.names.size())
        throw Failure("The adapter answers " + std::to_string(found.names.size()) + " names but " +
                      std::to_string(found.types.size()) + " types.");
    if (found.names.empty() || found.samples.empty()) fail(session, adapter, !found.samples.empty());
    return found;
}

// Without a stream there is no name that an XML element could be required to have.
void acceptAnyElement(Session& session) {
    const jmsin::DataFormatInfo* info = dataFormatOf(session.settings);
    if (info != nullptr && info->isByNames && session.settings.streamName.empty())
        session.settings.connection.insert_or_assign(params::kMatchStreamName, std::string("0"));
}

std::vector<std::string> remarks(const Discovery& found, const Settings& settings) {
    std::vector<std::string> sentences;
    if (readsDatesAsSeconds(settings))
        sentences.emplace_back(
            "Object arrays and custom messages have no date formats: their dates are seconds since 1970, and "
            "what follows the digits is ignored, so that \"7 apples\" is a date.");
    if (guessesBlanks(found, settings))
        sentences.emplace_back(
            "Blank values are not told from absent ones: that takes a second look at the samples, which a "
            "topic does not give. Both count as blank in columns that they make a string, and as absent in "
            "others.");
    return sentences;
}

// Of XML the proposal needs more than the answers tell; else only the explanation does, and only of samples
// with blank texts that a second look can find again.
bool needsSecondLook(const Session& session, const Discovery& found, const DiscoverOptions& options) {
    const jmsin::DataFormatInfo* info = dataFormatOf(session.settings);
    if (info == nullptr || !info->namesFields) return false;
    if (info->isByNames && options.format != "table") return true;
    return parameter(session, params::kDestinationType) == jmsin::kQueue && holdsBlanks(found);
}

// Without an explanation a user would not learn of warnings; what else is wrong with one is not asked for.
void hintAtWarnings(const Discovery& found, const Settings& settings) {
    std::string columns;
    try {
        const std::vector<Explanation> explanations = explain(found, settings);
        for (size_t i = 0; i < explanations.size(); ++i) {
            if (!explanations[i].warnings.empty()) addToList(columns, toUtf8(found.names[i]));
        }
    } catch (const Failure&) {
        return;
    }
    if (!columns.empty()) say("With --explain there are warnings about " + columns + ".");
}

}  // namespace

int runDiscovery(const DiscoverOptions& options) {
    const Settings asConfigured =
        soundSettings(options.session.config, options.session.overrides, Purpose::kDiscover);
    std::string streamName;
    if (!appendModifiedUtf8(options.stream, streamName)) throw Failure("--stream is no UTF-8.", kUsage);
    Output output;
    const Plugin plugin(pluginFor(asConfigured));
    Session session(asConfigured, options.session.logLevel);
    acceptAnyElement(session);

    LoadedAdapter adapter(plugin, session);
    SecondLook secondLook(session);
    const StopAction onSignal([&adapter, &secondLook, &output] {
        const JvmThread thisThread;
        output.stop();
        adapter.stop();
        secondLook.stop();
    });
    plugin.setDiscovery(adapter.handle());
    adapter.reset();
    Discovery found = discover(session, adapter);
    if (adapter.isStopped()) failAsStopped();
    if (needsSecondLook(session, found, options)) found.messages = secondLook.messages(found.samples.size());
    if (adapter.isStopped()) failAsStopped();

    const Proposal proposal = propose(found, asConfigured, streamName);
    std::vector<Explanation> explanations;
    if (options.explain) {
        explanations = explain(found, asConfigured);
    } else {
        hintAtWarnings(found, asConfigured);
    }
    const Findings findings{found, proposal, explanations, static_cast<size_t>(options.samples),
                            options.explain ? remarks(found, asConfigured) : std::vector<std::string>()};
    output.write(writeReport(options.format, findings));
    return kDone;
}

}  // namespace host
