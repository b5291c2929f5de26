#include "host/DiscoverExplain.h"

#include <cstdlib>
#include <functional>
#include <optional>

#include "datatypes/DataTypes.h"
#include "host/Console.h"
#include "host/toolkit/Text.h"

namespace host {

namespace {

constexpr char kSeconds[] = "%s";

// In the order in which discovery tries them; a string is what none of them reads.
constexpr uint32_t kTried[] = {DataTypes::kInteger, DataTypes::kLong,      DataTypes::kFloat,
                               DataTypes::kDate,    DataTypes::kTimestamp, DataTypes::kTime};

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

class SampledColumn {
public:
    SampledColumn(const Discovery& discovery, size_t index, const Settings& settings)
        : name_(discovery.names[index]), type_(discovery.types[index]), formats_(discoveryFormats(settings)) {
        for (size_t i = 0; i < discovery.samples.size(); ++i) {
            if (index < discovery.samples[i].size()) add({i + 1, discovery.samples[i][index]});
        }
    }

    // Samples of XML and FIX hold the empty text both for a blank value, which is a string, and for none at
    // all, which has no say; the answer tells which it was.
    Explanation explain(bool blankMayBeAbsent) {
        std::optional<Decision> decision;
        if (blankMayBeAbsent) decision = decide(filled_);
        const std::vector<Sampled>* values = &filled_;
        if (!decision || DataTypes::typeToString(decision->type) != type_) {
            values = &all_;
            decision = decide(all_);
        }
        const std::string own = decision ? DataTypes::typeToString(decision->type) : "nothing";
        if (own != type_)
            throw Failure("Column " + inQuotes(name_) + ": the adapter proposes " + type_ +
                          ", but the data type library makes " + own + " of its samples.");
        Explanation result;
        result.sample = (*values)[decision->at].sample;
        result.value = (*values)[decision->at].text;
        result.rule = ruleOf(*decision);
        result.values = values->size();
        countFits(*values, result);
        warn(*values, *decision, result);
        return result;
    }

private:
    void add(Sampled value) {
        if (!value.text.empty()) filled_.push_back(value);
        all_.push_back(std::move(value));
    }

    bool reads(uint32_t type, const std::string& text) const {
        DataTypes::DataValue ignored;
        const char* error = nullptr;
        const bool usesFormats = isTemporal(type);
        // As discovery does: times by the library's format, whatever the configured one is.
        return DataTypes::convertFromString(
            type, text.c_str(), ignored, error, usesFormats ? formats_.date.c_str() : nullptr,
            usesFormats ? formats_.timestamp.c_str() : nullptr, nullptr, nullptr);
    }

    uint32_t typeOf(const std::string& text) const {
        for (const uint32_t type : kTried) {
            if (reads(type, text)) return type;
        }
        return DataTypes::kString;
    }

    std::optional<Decision> decide(const std::vector<Sampled>& values) const {
        if (values.empty()) return std::nullopt;
        Decision decision;
        for (size_t i = 0; i < values.size(); ++i) {
            const uint32_t own = typeOf(values[i].text);
            uint32_t wider = own;
            if (i > 0) DataTypes::maximizeAnyType(wider, decision.type);
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

    void countFits(const std::vector<Sampled>& values, Explanation& result) const {
        for (const uint32_t type : kTried) {
            size_t count = 0;
            for (const Sampled& value : values) count += reads(type, value.text) ? 1 : 0;
            result.fits.emplace_back(DataTypes::typeToString(type), count);
        }
        result.fits.emplace_back(DataTypes::typeToString(DataTypes::kString), values.size());
    }

    void warn(const std::vector<Sampled>& values, const Decision& decision, Explanation& result) const {
        if (isNumber(decision.type)) {
            warnOf(values, result, [](const Sampled& value) {
                return hasLeadingZero(value.text) ? named(value) + " loses its leading zeros as a number"
                                                  : std::string();
            });
        }
        if (isTemporal(decision.type)) {
            warnOf(values, result, [this](const Sampled& value) { return ignoredRest(value); });
        }
        const auto filled = decide(filled_);
        if (decision.type == DataTypes::kString && filled && filled->type != DataTypes::kString)
            result.warnings.push_back("only blank values make it a string, " +
                                      std::to_string(all_.size() - filled_.size()) + " of " +
                                      std::to_string(all_.size()) + "; without them it is " +
                                      DataTypes::typeToString(filled->type));
    }

    // The first value that there is something to say of, and how many more there are.
    static void warnOf(const std::vector<Sampled>& values, Explanation& result,
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
        std::string read = text;
        if (type == DataTypes::kTimestamp) read.resize(std::min(text.rfind('.'), text.size()));
        const std::string format = type == DataTypes::kDate        ? formats_.date
                                   : type == DataTypes::kTimestamp ? formats_.timestamp
                                                                   : DataTypes::g_time_format;
        if (format == kSeconds) {
            char* end = nullptr;
            static_cast<void>(std::strtol(read.c_str(), &end, 10));
            return end;
        }
        tm ignored{};
        const char* rest = DataTypes::strptime(read.c_str(), format.c_str(), &ignored);
        return rest != nullptr ? rest : "";
    }

    const std::string name_;
    const std::string type_;
    const TemporalFormats formats_;
    std::vector<Sampled> all_;
    std::vector<Sampled> filled_;
};

}  // namespace

std::vector<Explanation> explain(const Discovery& discovery, const Settings& settings) {
    const auto format = settings.connection.find("dataFormat");
    const bool blankMayBeAbsent =
        format != settings.connection.end() && (format->second == "XML" || format->second == "FIX");
    std::vector<Explanation> explanations;
    for (size_t i = 0; i < discovery.names.size(); ++i)
        explanations.push_back(SampledColumn(discovery, i, settings).explain(blankMayBeAbsent));
    return explanations;
}

}  // namespace host
