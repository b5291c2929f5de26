#include "host/configuration/ConfigurationFile.h"

#include <toml++/toml.h>
#include <algorithm>
#include <filesystem>
#include <optional>
#include <set>

#include "host/configuration/Columns.h"
#include "host/configuration/ConfigurationKeys.h"
#include "host/configuration/Overrides.h"
#include "host/configuration/Problems.h"
#include "host/configuration/TomlText.h"
#include "host/database/DatabaseKinds.h"
#include "host/values/ModifiedUtf8.h"
#include "host/values/Text.h"
#include "host/values/ValueTyping.h"

namespace fs = std::filesystem;

namespace host {

namespace {

constexpr int kHighestLogLevel = 7;

// Reads one document into Settings; every fault becomes a problem and reading goes on.
class Reader {
public:
    Reader(std::string file, Problems& problems) : file_(std::move(file)), problems_(problems) {}

    std::optional<Settings> read(const std::vector<std::string>& overrides, StreamSection stream) {
        std::string fault;
        const auto text = readTomlText(file_, fault);
        if (!text) {
            problems_.addFirst(fault);
            return std::nullopt;
        }
        toml::table document;
        try {
            document = toml::parse(*text, file_);
        } catch (const toml::parse_error& error) {
            problems_.add(error.source(), "the file is no TOML: " + std::string(error.description()) + ".");
            return std::nullopt;
        }
        for (const std::string& override : overrides) applyOverride(override, document, problems_);
        for (const auto& [name, section] : document) readSection(name.str(), section);
        if (stream == StreamSection::kNeeded) checkStream();
        if (document.contains("sink")) checkSink();
        addDefaults();
        addSinkDefaults();
        settings_.malformed = problems_.malformed();
        return std::move(settings_);
    }

private:
    void readSection(std::string_view name, const toml::node& section) {
        if (!isSection(name)) {
            problems_.add(section, "there is no section [" + std::string(name) +
                                       "]; the nearest known one is [" + nearestSection(name) + "].");
            return;
        }
        if (!section.is_table()) {
            problems_.add(section, std::string(name) + " is " + describe(section) +
                                       "; it must be the section [" + std::string(name) + "].");
            return;
        }
        for (const auto& [key, value] : *section.as_table()) {
            const ConfigurationKey* known = findKey(name, key.str());
            if (known == nullptr) {
                problems_.add(value, "there is no key " + std::string(name) + '.' + std::string(key.str()) +
                                         "; the nearest known one is " + nearestKey(name, key.str()) + ".");
            } else {
                readKey(*known, value);
            }
        }
    }

    void readKey(const ConfigurationKey& key, const toml::node& value) {
        given_.insert(nameOf(key));
        switch (key.kind) {
            case ValueKind::kText:
            case ValueKind::kPlainText:
            case ValueKind::kPath:
            case ValueKind::kFile:
            case ValueKind::kDatabase:
                readText(key, value);
                break;
            case ValueKind::kChoice:
                readChoice(key, value);
                break;
            case ValueKind::kInteger:
                readInteger(key, value);
                break;
            case ValueKind::kFlag:
                readFlag(key, value);
                break;
            case ValueKind::kLogLevel:
                readLogLevel(key, value);
                break;
            case ValueKind::kTexts:
            case ValueKind::kPaths:
                readTexts(key, value);
                break;
            case ValueKind::kColumns: {
                StreamColumns columns = readColumns(value, problems_);
                settings_.columns = std::move(columns.own);
                settings_.envelope = std::move(columns.envelope);
                break;
            }
        }
    }

    static std::string nameOf(const ConfigurationKey& key) {
        return std::string(key.section) + '.' + key.name;
    }

    // Null: the key's value has another place.
    template <typename Value>
    Value* placeOf(const ConfigurationKey& key) {
        const auto* place = std::get_if<ConfigurationKey::Place<Value>>(&key.place);
        return place != nullptr ? &(*place)(settings_) : nullptr;
    }

    // Where the key's value goes as a text.
    std::string& textOf(const ConfigurationKey& key) {
        std::string* text = placeOf<std::string>(key);
        return text != nullptr ? *text : settings_.connection[key.name];
    }

    void readText(const ConfigurationKey& key, const toml::node& value) {
        const auto* text = value.as_string();
        if (text == nullptr) {
            problems_.refuse(nameOf(key), value, "a text in quotes");
            return;
        }
        const std::string modified = modifiedText(value, text->get(), problems_);
        textOf(key) = key.kind == ValueKind::kText ? modified : placed(key.kind, value, text->get());
    }

    // The text with its path, if it is one, from where that counts.
    std::string placed(ValueKind kind, const toml::node& value, const std::string& text) const {
        if (kind == ValueKind::kPath) return resolved(value, text);
        if (kind == ValueKind::kFile) return fromFolder(value, text);
        const std::string_view scheme = kSqliteScheme;
        if (kind != ValueKind::kDatabase || !text.starts_with(scheme)) return text;
        return std::string(scheme) + fromFolder(value, text.substr(scheme.size()));
    }

    void readChoice(const ConfigurationKey& key, const toml::node& value) {
        const auto* text = value.as_string();
        std::string allowed;
        for (const Choice& choice : key.choices) {
            if (text != nullptr && text->get() == choice.word) {
                choice.choose(settings_);
                return;
            }
            addToList(allowed, inQuotes(choice.word), " and ");
        }
        problems_.markMalformed(nameOf(key));
        problems_.add(value, nameOf(key) + " is " + describe(value) + "; allowed are " + allowed + ".");
    }

    void readInteger(const ConfigurationKey& key, const toml::node& value) {
        const auto* number = value.as_integer();
        std::int64_t* place = placeOf<std::int64_t>(key);
        const bool isAllowed =
            number != nullptr &&
            (place == nullptr || (number->get() >= key.least && number->get() <= key.most));
        if (!isAllowed) {
            const std::string range =
                place == nullptr ? ""
                                 : " from " + std::to_string(key.least) + " to " + std::to_string(key.most);
            problems_.refuse(nameOf(key), value, "an integer" + range);
        } else if (place != nullptr) {
            *place = number->get();
        } else {
            textOf(key) = std::to_string(number->get());
        }
    }

    void readFlag(const ConfigurationKey& key, const toml::node& value) {
        const auto* flag = value.as_boolean();
        const auto* number = value.as_integer();
        const int64_t level = flag != nullptr ? flag->get() : number != nullptr ? number->get() : -1;
        if (level != 0 && level != 1) {
            problems_.refuse(nameOf(key), value, "true, false, 1 or 0 without quotes");
        } else if (bool* place = placeOf<bool>(key)) {
            *place = level == 1;
        } else {
            textOf(key) = std::to_string(level);
        }
    }

    void readLogLevel(const ConfigurationKey& key, const toml::node& value) {
        const auto* level = value.as_integer();
        if (level != nullptr && level->get() >= 0 && level->get() <= kHighestLogLevel) {
            settings_.logLevel = static_cast<int>(level->get());
        } else {
            problems_.refuse(nameOf(key), value, "an integer from 0 (least) to 7 (every step)");
        }
    }

    void readTexts(const ConfigurationKey& key, const toml::node& value) {
        const bool isPaths = key.kind == ValueKind::kPaths;
        std::vector<std::string> texts;
        if (const auto* text = value.as_string())
            texts = isPaths ? split(text->get()) : std::vector{text->get()};
        const toml::array* list = value.as_array();
        bool isAllowed = value.is_string() || list != nullptr;
        for (size_t i = 0; list != nullptr && i < list->size(); ++i) {
            const auto* text = list->get(i)->as_string();
            isAllowed = isAllowed && text != nullptr;
            if (text != nullptr) texts.push_back(text->get());
        }
        if (!isAllowed) {
            problems_.refuse(nameOf(key), value, "a list of texts in quotes");
            return;
        }
        for (const std::string& text : texts)
            placeOf<std::vector<std::string>>(key)->push_back(isPaths ? resolved(value, text) : text);
    }

    static std::vector<std::string> split(const std::string& text) {
        std::vector<std::string> parts;
        for (size_t at = 0; at <= text.size();) {
            const size_t end = std::min(text.find(':', at), text.size());
            if (end > at) parts.push_back(text.substr(at, end - at));
            at = end + 1;
        }
        return parts;
    }

    // Paths of the file count from its folder, those of --set from the working folder. A jar's bare name is
    // looked for later.
    std::string resolved(const toml::node& value, const std::string& text) const {
        return text.find('/') == std::string::npos ? text : fromFolder(value, text);
    }

    std::string fromFolder(const toml::node& value, const std::string& text) const {
        if (!value.source().begin || text.empty()) return text;
        return (fs::path(file_).parent_path() / text).lexically_normal().string();
    }

    void checkStream() {
        if (settings_.streamName.empty() && !problems_.malformed().contains("stream.name"))
            problems_.addMissing("the section [stream] has no name; it needs one, as in name = \"Trades\".");
        if (!settings_.columns.empty() || problems_.malformed().contains("stream.columns")) return;
        problems_.addMissing(
            settings_.envelope.empty()
                ? "the section [stream] has no columns; it needs at least one, as in "
                  "columns = [{ name = \"Symbol\", type = \"string\" }]."
                : "all columns of the section [stream] say from; a message must have at least "
                  "one field of its own.");
    }

    void checkSink() {
        if (hasSink(settings_) || problems_.malformed().contains("sink.url")) return;
        problems_.addMissing(
            "the section [sink] has no url; it needs one, as in url = \"sqlite:trades.db\".");
    }

    // The adapter passes an absent format on as the empty text, which as a format accepts anything; a server
    // hands in the defaults instead.
    void addDefaults() {
        settings_.connection.emplace(params::kTimeFormat, kDefaultTimeFormat);
        settings_.connection.emplace(params::kDateFormat, kDefaultDateFormat);
        settings_.connection.emplace(params::kTimestampFormat, kDefaultDateFormat);
    }

    void addSinkDefaults() {
        SinkSettings& sink = settings_.sink;
        if (sink.table.empty()) sink.table = toUtf8(settings_.streamName);
        if (!given_.contains("sink.mode") && hasKeys(settings_)) sink.mode = SinkMode::kApply;
        if (!sink.source.empty()) return;
        const auto parameter = [this](const char* name) { return toUtf8(parameterOf(settings_, name)); };
        sink.source = isDurable(settings_)
                          ? parameter(params::kClientId) + '/' + parameter(params::kSubscriptionName)
                          : parameter(params::kDestinationName);
    }

    std::string file_;
    Problems& problems_;
    std::set<std::string> given_;  // "section.name" of every key that is there
    Settings settings_;
};

}  // namespace

std::optional<Settings> readSettings(const std::string& file, const std::vector<std::string>& overrides,
                                     std::vector<std::string>& problems, StreamSection stream) {
    Problems found(file);
    std::optional<Settings> settings = Reader(file, found).read(overrides, stream);
    for (std::string& sentence : found.sentences()) problems.push_back(std::move(sentence));
    return settings;
}

}  // namespace host
