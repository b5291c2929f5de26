#include "host/discovery/Explanation.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <optional>

#include "datatypes/DataTypes.h"
#include "host/process/Console.h"
#include "host/process/Failure.h"
#include "host/values/Text.h"

namespace host {

namespace {

struct Sampled {
    size_t sample;  // counted from 1
    std::string text;
};

struct Decision {
    uint32_t type = DataTypes::kUntyped;
    size_t at = 0;  // the value that made the type what it is
    uint32_t before = DataTypes::kUntyped;
    uint32_t own = DataTypes::kUntyped;  // that value's alone
};

bool isTemporal(uint32_t type) {
    return type == DataTypes::kDate || type == DataTypes::kTimestamp || type == DataTypes::kTime;
}

bool isNumber(uint32_t type) {
    return type == DataTypes::kInteger || type == DataTypes::kLong || type == DataTypes::kFloat;
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool hasLeadingZero(const std::string& text) {
    const size_t first = text.starts_with('+') || text.starts_with('-') ? 1 : 0;
    return text.size() > first + 1 && text[first] == '0' && isDigit(text[first + 1]);
}

std::string named(const Sampled& value) {
    return quoted(value.text) + " (sample " + std::to_string(value.sample) + ")";
}

using Values = std::vector<Sampled>;

Values withoutBlanks(const Values& values) {
    Values filled;
    std::copy_if(values.begin(), values.end(), std::back_inserter(filled),
                 [](const Sampled& value) { return !value.text.empty(); });
    return filled;
}

class SampledColumn {
public:
    SampledColumn(std::string name, std::string type, TemporalFormats formats)
        : name_(std::move(name)), type_(std::move(type)), formats_(std::move(formats)) {}

    Explanation explain(const Values& values) const {
        const std::optional<Decision> decision = decide(values);
        const std::string own = decision ? DataTypes::typeToString(decision->type) : "nothing";
        if (own != type_)
            throw Failure("Column " + inQuotes(name_) + ": the adapter proposes " + type_ +
                          ", but the data type library makes " + own + " of its samples.");
        Explanation result;
        result.sample = values[decision->at].sample;
        result.value = values[decision->at].text;
        result.rule = ruleOf(*decision);
        result.values = values.size();
        countFits(values, result);
        warn(values, *decision, result);
        return result;
    }

    // Where a blank text may be a value or none at all: the type tells which, unless it is a string anyway.
    Explanation guess(const Values& values) const {
        const Values filled = withoutBlanks(values);
        const auto decision = decide(filled);
        const bool areNone = decision && DataTypes::typeToString(decision->type) == type_;
        return explain(areNone ? filled : values);
    }

private:
    bool reads(uint32_t type, const std::string& text) const {
        // As discovery does: times by the library's format, whatever the configured one is.
        return DataTypes::readsAs(type, text.c_str(), formats_.date.c_str(), formats_.timestamp.c_str(),
                                  nullptr);
    }

    uint32_t typeOf(const std::string& text) const {
        return DataTypes::inferType(text.c_str(), formats_.date.c_str(), formats_.timestamp.c_str(), nullptr);
    }

    std::optional<Decision> decide(const Values& values) const {
        if (values.empty()) return std::nullopt;
        Decision decision;
        for (size_t i = 0; i < values.size(); ++i) {
            const uint32_t own = typeOf(values[i].text);
            uint32_t wider = i > 0 ? decision.type : DataTypes::kNotInferred;
            DataTypes::widenColumn(wider, own);
            if (i > 0 && wider == decision.type) continue;
            decision = {wider, i, decision.type, own};
        }
        return decision;
    }

    static std::string ruleOf(const Decision& decision) {
        const std::string own = DataTypes::typeToString(decision.own);
        std::string rule = decision.own == DataTypes::kString ? "no type but string reads it"
                                                              : own + " is the first type that reads it";
        if (decision.at > 0)
            rule += "; with " + DataTypes::typeToString(decision.before) + " before it that makes " +
                    DataTypes::typeToString(decision.type);
        return rule;
    }

    void countFits(const Values& values, Explanation& result) const {
        for (const uint32_t type : DataTypes::kInferredTypes) {
            size_t count = 0;
            for (const Sampled& value : values) count += reads(type, value.text) ? 1 : 0;
            result.fits.emplace_back(DataTypes::typeToString(type), count);
        }
        result.fits.emplace_back(DataTypes::typeToString(DataTypes::kString), values.size());
    }

    void warn(const Values& values, const Decision& decision, Explanation& result) const {
        if (isNumber(decision.type)) {
            warnOf(values, result, [](const Sampled& value) {
                return hasLeadingZero(value.text) ? named(value) + " loses its leading zeros as a number"
                                                  : std::string();
            });
        }
        if (decision.type != DataTypes::kString) {
            warnOf(values, result, [this](const Sampled& value) { return ignoredRest(value); });
        }
        const Values filled = withoutBlanks(values);
        const auto withoutThem = decide(filled);
        if (decision.type == DataTypes::kString && withoutThem && withoutThem->type != DataTypes::kString)
            result.warnings.push_back("only blank values make it a string, " +
                                      std::to_string(values.size() - filled.size()) + " of " +
                                      std::to_string(values.size()) + "; without them it is " +
                                      DataTypes::typeToString(withoutThem->type));
    }

    // The first value that there is something to say of, and how many more there are.
    static void warnOf(const Values& values, Explanation& result,
                       const std::function<std::string(const Sampled&)>& find) {
        std::string first;
        size_t more = 0;
        for (const Sampled& value : values) {
            const std::string found = find(value);
            if (found.empty()) continue;
            if (first.empty()) {
                first = found;
            } else {
                ++more;
            }
        }
        if (first.empty()) return;
        if (more > 0) first += "; likewise " + std::to_string(more) + " more";
        result.warnings.push_back(first);
    }

    std::string ignoredRest(const Sampled& value) const {
        const uint32_t type = typeOf(value.text);
        if (!isTemporal(type)) return {};
        const std::string rest = restOf(type, value.text);
        return rest.empty() ? std::string()
                            : named(value) + " is a " + DataTypes::typeToString(type) +
                                  " only because the rest, " + quoted(rest) + ", is ignored";
    }

    // What of the text its type's format does not read. Behind the last point of a timestamp is its fraction.
    std::string restOf(uint32_t type, const std::string& text) const {
        const size_t point = type == DataTypes::kTimestamp ? text.rfind('.') : std::string::npos;
        const std::string rest = restOfWhole(type, text.substr(0, point));
        return rest.empty() && point != std::string::npos ? restOfFraction(text.substr(point + 1)) : rest;
    }

    // Three digits are read, among blanks that are skipped.
    static std::string restOfFraction(const std::string& text) {
        size_t at = 0;
        for (int digits = 0; at < text.size() && (text[at] == ' ' || (isDigit(text[at]) && digits < 3)); ++at)
            digits += isDigit(text[at]) ? 1 : 0;
        return text.substr(at);
    }

    std::string restOfWhole(uint32_t type, const std::string& text) const {
        const std::string format = type == DataTypes::kDate        ? formats_.date
                                   : type == DataTypes::kTimestamp ? formats_.timestamp
                                                                   : DataTypes::g_time_format;
        if (format == kSecondsFormat) {
            char* end = nullptr;
            static_cast<void>(std::strtol(text.c_str(), &end, 10));
            return end;
        }
        tm ignored{};
        const char* rest = DataTypes::strptime(text.c_str(), format.c_str(), &ignored);
        return rest != nullptr ? rest : "";
    }

    const std::string name_;
    const std::string type_;
    const TemporalFormats formats_;
};

}  // namespace

bool guessesBlanks(const Discovery& discovery, const Settings& settings) {
    const jmsin::DataFormatInfo* info = dataFormatOf(settings);
    return info != nullptr && info->namesFields && holdsBlanks(discovery) &&
           !sawSamplesAgain(discovery, settings);
}

std::vector<Explanation> explain(const Discovery& discovery, const Settings& settings) {
    const bool isTold = sawSamplesAgain(discovery, settings);
    const bool isGuess = guessesBlanks(discovery, settings);
    std::vector<Explanation> explanations;
    for (size_t i = 0; i < discovery.names.size(); ++i) {
        Values values;
        Values told;  // without those that are none
        for (size_t at = 0; at < discovery.samples.size(); ++at) {
            if (i >= discovery.samples[at].size()) continue;
            values.push_back({at + 1, discovery.samples[at][i]});
            if (!isTold || discovery.messages[at].find(discovery.names[i]) != nullptr)
                told.push_back(values.back());
        }
        const SampledColumn column(discovery.names[i], discovery.types[i], discoveryFormats(settings));
        explanations.push_back(isGuess || told.empty() ? column.guess(values) : column.explain(told));
    }
    return explanations;
}

}  // namespace host
