#include "host/discovery/Proposal.h"

#include <algorithm>

#include "host/process/Failure.h"
#include "host/values/Opcodes.h"
#include "host/values/Text.h"
#include "jms/MessageLayout.h"

namespace host {

namespace {

constexpr char kString[] = "string";
constexpr char kFallbackName[] = "Stream";
constexpr size_t kPrefix = jms::kPrefixLength;

using Row = std::vector<std::string>;

class Proposer {
public:
    Proposer(const Discovery& discovery, const Settings& settings, const std::string& streamName)
        : discovery_(discovery),
          settings_(settings),
          format_(dataFormatOf(settings) != nullptr ? *dataFormatOf(settings) : jmsin::kDataFormats[0]),
          asked_(!streamName.empty() ? streamName : settings.streamName),
          isXml_(format_.isByNames),
          isSure_(sawSamplesAgain(discovery, settings)) {}

    Proposal propose() {
        hasPrefix_ = findPrefix();
        proposal_.streamName = streamName();
        addLayout();
        for (size_t i = hasPrefix_ ? kPrefix : 0; i < discovery_.names.size(); ++i) addColumn(i);
        if (isXml_) addLaterAttributes();
        return std::move(proposal_);
    }

private:
    bool isAlways() const { return format_.prefix == jmsin::Prefix::kAlways; }

    bool expectsPrefix() const {
        const bool isOptional = format_.prefix == jmsin::Prefix::kAsConfigured;
        return isAlways() || (isOptional && flagOf(settings_, params::kExpectStreamNameOpcode));
    }

    bool findPrefix() const {
        if (!expectsPrefix()) return false;
        const bool hasFields = discovery_.names.size() > kPrefix;
        if (isAlways()) {  // a converter yields both
            if (hasFields) return true;
            throw Failure(
                "The converter's rows hold stream name and opcode alone, so there is no column to propose.");
        }
        if (!hasFields) return false;
        // A run refuses an object array without a field behind the prefix, so such a sample has none.
        const size_t least = format_.isText ? kPrefix : kPrefix + 1;
        const std::string& stream = asked_.empty() ? discovery_.samples.front().front() : asked_;
        const auto isOpcode = [](const std::string& field) {
            return field.size() == 1 && isOpcodeLetter(field[0]);
        };
        bool isOwn = false;
        for (const Row& row : discovery_.samples) {
            if (row.size() < least || row[0].empty() || !isOpcode(row[1])) return false;
            isOwn = isOwn || row[0] == stream;
            if (asked_.empty() && row[0] != stream) return false;
        }
        return isOwn;
    }

    std::string streamName() const {
        if (!asked_.empty()) return asked_;
        if (isXml_ && !discovery_.messages.empty()) return discovery_.messages.front().element;
        if (hasPrefix_) {
            for (const Row& row : discovery_.samples) {
                if (!row.empty() && !row[0].empty()) return row[0];
            }
        }
        const std::string destination = parameterOf(settings_, params::kDestinationName);
        const std::string name = destination.substr(destination.find_last_of("/.:") + 1);
        return !name.empty() ? name : kFallbackName;
    }

    void addLayout() {
        if (hasPrefix_) {
            proposal_.notes.push_back(discovery_.names[0] + " and " + discovery_.names[1] +
                                      " are no columns here: they are the stream's name and the opcode, "
                                      "which a run takes off.");
        } else if (expectsPrefix()) {
            proposal_.connection.emplace_back(params::kExpectStreamNameOpcode, "false");
        }
        if (isXml_ && !elementsMatch()) proposal_.connection.emplace_back(params::kMatchStreamName, "false");
    }

    // Whether a run takes every sampled element for the stream's.
    bool elementsMatch() {
        if (!flagOf(settings_, params::kMatchStreamName)) return true;
        if (!settings_.streamName.empty() && settings_.streamName == proposal_.streamName) return true;
        if (!isSure_)
            proposal_.notes.emplace_back(
                "The name of the samples' element is not known for certain, so a run is told to take any.");
        const auto isNamedSo = [&](const auto& message) { return message.element == proposal_.streamName; };
        return isSure_ && std::all_of(discovery_.messages.begin(), discovery_.messages.end(), isNamedSo);
    }

    // A row's type is what a run reads a field by, so it decides whether the widened type can stand: beside a
    // date an integer makes a date column, which would refuse it.
    void addColumn(size_t index) {
        ProposedColumn column{discovery_.names[index],
                              discovery_.types[index],
                              index < discovery_.keys.size() && discovery_.keys[index],
                              {}};
        const auto code = typeCode(column.type);
        for (size_t i = 0; code && i < discovery_.samples.size() && column.reason.empty(); ++i) {
            const Row& row = discovery_.samples[i];
            if (index >= row.size() || isOfOtherStream(row)) continue;
            if (row[index].empty() && !isText(i, column.name)) continue;
            Value value;
            std::string reason;
            if (!readValue(*code, row[index], rowFormats(), value, reason))
                column.reason = "not " + column.type + ", which cannot hold " + quoted(row[index]) +
                                " (sample " + std::to_string(i + 1) + "): " + reason;
        }
        if (!column.reason.empty()) column.type = kString;
        proposal_.columns.push_back(std::move(column));
    }

    // A blank is null in a row, but for a blank value of an XML or FIX message.
    bool isText(size_t sample, const std::string& name) const {
        return isSure_ && discovery_.messages[sample].find(name) != nullptr;
    }

    bool isOfOtherStream(const Row& row) const {
        return hasPrefix_ && !row[0].empty() && row[0] != proposal_.streamName;
    }

    // A row takes the default for an empty format.
    TemporalFormats rowFormats() const {
        TemporalFormats formats = discoveryFormats(settings_);
        if (formats.time.empty()) formats.time = kDefaultTimeFormat;
        if (formats.date.empty()) formats.date = kDefaultDateFormat;
        if (formats.timestamp.empty()) formats.timestamp = kDefaultDateFormat;
        return formats;
    }

    // The entry points know the attributes of the first message only, and a run refuses a message with one
    // that is no column.
    void addLaterAttributes() {
        if (!isSure_) {
            proposal_.notes.emplace_back(
                "Attributes that only later samples have are not known: that takes a second look at the "
                "samples, which a topic does not give.");
            return;
        }
        for (const PeekedMessage& message : discovery_.messages) {
            for (const auto& [name, value] : message.fields) {
                const auto isNamed = [&name = name](const ProposedColumn& column) {
                    return column.name == name;
                };
                if (std::none_of(proposal_.columns.begin(), proposal_.columns.end(), isNamed))
                    proposal_.columns.push_back(
                        {name, kString, false, "of unknown type: the first sample does not have it"});
            }
        }
    }

    const Discovery& discovery_;
    const Settings& settings_;
    const jmsin::DataFormatInfo format_;
    const std::string asked_;
    const bool isXml_;
    const bool isSure_;  // the second look saw the samples
    bool hasPrefix_ = false;
    Proposal proposal_;
};

}  // namespace

bool holdsBlanks(const Discovery& discovery) {
    return std::any_of(discovery.samples.begin(), discovery.samples.end(), [](const auto& sample) {
        return std::find(sample.begin(), sample.end(), "") != sample.end();
    });
}

bool sawSamplesAgain(const Discovery& discovery, const Settings& settings) {
    if (parameterOf(settings, params::kDestinationType) != jmsin::kQueue) return false;
    if (discovery.messages.size() != discovery.samples.size()) return false;
    for (size_t i = 0; i < discovery.samples.size(); ++i) {
        for (size_t column = 0; column < discovery.samples[i].size(); ++column) {
            const std::string* found = discovery.messages[i].find(discovery.names[column]);
            if (discovery.samples[i][column] != (found != nullptr ? *found : "")) return false;
        }
    }
    return true;
}

Proposal propose(const Discovery& discovery, const Settings& settings, const std::string& streamName) {
    return Proposer(discovery, settings, streamName).propose();
}

}  // namespace host
