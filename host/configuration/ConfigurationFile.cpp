#include "host/configuration/ConfigurationFile.h"

#include <toml++/toml.h>
#include <algorithm>
#include <filesystem>
#include <optional>

#include "host/configuration/Columns.h"
#include "host/configuration/ConfigurationKeys.h"
#include "host/configuration/Overrides.h"
#include "host/configuration/Problems.h"
#include "host/configuration/TomlText.h"
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
        addDefaults();
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
        switch (key.kind) {
            case ValueKind::kText:
                if (const auto text = readText(key, value))
                    targetOf(key) = modifiedText(value, *text, problems_);
                break;
            case ValueKind::kPath:
                if (const auto text = readText(key, value)) targetOf(key) = resolved(value, *text);
                break;
            case ValueKind::kInteger:
                if (const auto* number = value.as_integer()) {
                    targetOf(key) = std::to_string(number->get());
                } else {
                    problems_.refuse(nameOf(key), value, "an integer");
                }
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
            case ValueKind::kColumns:
                settings_.columns = readColumns(value, problems_);
                break;
        }
    }

    static std::string nameOf(const ConfigurationKey& key) {
        return std::string(key.section) + '.' + key.name;
    }

    std::string& targetOf(const ConfigurationKey& key) {
        return key.text != nullptr ? settings_.*key.text : settings_.connection[key.name];
    }

    std::optional<std::string> readText(const ConfigurationKey& key, const toml::node& value) {
        if (const auto* text = value.as_string()) return text->get();
        problems_.refuse(nameOf(key), value, "a text in quotes");
        return std::nullopt;
    }

    void readFlag(const ConfigurationKey& key, const toml::node& value) {
        const auto* flag = value.as_boolean();
        const auto* number = value.as_integer();
        const int64_t level = flag != nullptr ? flag->get() : number != nullptr ? number->get() : -1;
        if (level == 0 || level == 1) {
            targetOf(key) = std::to_string(level);
        } else {
            problems_.refuse(nameOf(key), value, "true, false, 1 or 0 without quotes");
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
            (settings_.*key.texts).push_back(isPaths ? resolved(value, text) : text);
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
        if (!value.source().begin || text.find('/') == std::string::npos) return text;
        return (fs::path(file_).parent_path() / text).lexically_normal().string();
    }

    void checkStream() {
        if (settings_.streamName.empty() && !problems_.malformed().contains("stream.name"))
            problems_.addMissing("the section [stream] has no name; it needs one, as in name = \"Trades\".");
        if (settings_.columns.empty() && !problems_.malformed().contains("stream.columns"))
            problems_.addMissing(
                "the section [stream] has no columns; it needs at least one, as in "
                "columns = [{ name = \"Symbol\", type = \"string\" }].");
    }

    // The adapter passes an absent format on as the empty text, which as a format accepts anything; a server
    // hands in the defaults instead.
    void addDefaults() {
        settings_.connection.emplace(params::kTimeFormat, kDefaultTimeFormat);
        settings_.connection.emplace(params::kDateFormat, kDefaultDateFormat);
        settings_.connection.emplace(params::kTimestampFormat, kDefaultDateFormat);
    }

    std::string file_;
    Problems& problems_;
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
