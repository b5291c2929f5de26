#include "host/configuration/ConfigurationFile.h"

#include <toml++/toml.h>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <optional>
#include <set>

#include "host/configuration/ConfigurationKeys.h"
#include "host/configuration/TomlText.h"
#include "host/process/Console.h"
#include "host/values/ModifiedUtf8.h"
#include "host/values/Text.h"
#include "host/values/ValueTyping.h"

namespace fs = std::filesystem;

namespace host {

namespace {

constexpr int kHighestLogLevel = 7;

std::string describe(const toml::node& node) {
    if (const auto* text = node.as_string()) return "the text " + inQuotes(text->get());
    if (const auto* number = node.as_integer()) return "the integer " + std::to_string(number->get());
    if (const auto* flag = node.as_boolean()) return flag->get() ? "true" : "false";
    if (node.is_floating_point()) return "a number with a fraction";
    if (node.is_array()) return "a list";
    if (node.is_table()) return "a table";
    return "a date or time";
}

// Reads one document into Settings; every fault becomes a problem and reading goes on.
class Reader {
public:
    explicit Reader(std::string file) : file_(std::move(file)) {}

    std::optional<Settings> read(const std::vector<std::string>& overrides, StreamSection stream) {
        std::string fault;
        const auto text = readTomlText(file_, fault);
        if (!text) {
            problems_.push_back({0, fault});
            return std::nullopt;
        }
        toml::table document;
        try {
            document = toml::parse(*text, file_);
        } catch (const toml::parse_error& error) {
            problem(error.source(), "the file is no TOML: " + std::string(error.description()) + ".");
            return std::nullopt;
        }
        for (const std::string& override : overrides) apply(override, document);
        for (const auto& [name, section] : document) readSection(name.str(), section);
        if (stream == StreamSection::kNeeded) checkStream();
        addDefaults();
        return std::move(settings_);
    }

    // In the order of the file; what the overrides brought comes first.
    std::vector<std::string> problems() {
        std::stable_sort(problems_.begin(), problems_.end(),
                         [](const Problem& one, const Problem& other) { return one.line < other.line; });
        std::vector<std::string> sentences;
        for (const Problem& found : problems_) sentences.push_back(found.sentence);
        return sentences;
    }

private:
    struct Problem {
        std::uint32_t line;  // 0: a value put in by an override, which has no place in the file
        std::string sentence;
    };

    void problem(const toml::source_region& where, const std::string& sentence) {
        const std::string place = where.begin ? file_ + ":" + std::to_string(where.begin.line) : "--set";
        problems_.push_back({where.begin.line, place + ": " + sentence});
    }
    void problem(const toml::node& node, const std::string& sentence) { problem(node.source(), sentence); }

    void apply(const std::string& override, toml::table& document) {
        const size_t equals = override.find('=');
        const size_t dot = override.find('.');
        if (equals == std::string::npos || dot == std::string::npos || dot > equals) {
            problems_.push_back({0, "--set " + override + ": this is not of the form section.name=value."});
            return;
        }
        const std::string section = override.substr(0, dot);
        const std::string name = override.substr(dot + 1, equals - dot - 1);
        const std::string text = override.substr(equals + 1);
        if (document.get_as<toml::table>(section) == nullptr)
            document.insert_or_assign(section, toml::table());
        toml::table& target = *document.get_as<toml::table>(section);
        const ConfigurationKey* key = findKey(section, name);
        const bool isText = key == nullptr || key->kind == ValueKind::kText || key->kind == ValueKind::kPath;
        if (!isText && lineOfDeepKey(text) > 0) {
            problems_.push_back({0, "--set " + section + '.' + name + kDeepKey});
            return;
        }
        if (isText || !insertParsed(target, name, text)) target.insert_or_assign(name, text);
    }

    // The text as a TOML value; false when it is none.
    static bool insertParsed(toml::table& target, const std::string& name, const std::string& text) {
        try {
            toml::table parsed = toml::parse("value = " + text);
            // A copy has no place in a source, which tells overrides from the file's values.
            parsed.get("value")->visit([&](const auto& value) { target.insert_or_assign(name, value); });
            return true;
        } catch (const toml::parse_error&) {
            return false;
        }
    }

    void readSection(std::string_view name, const toml::node& section) {
        if (!isSection(name)) {
            problem(section, "there is no section [" + std::string(name) + "]; the nearest known one is [" +
                                 nearestSection(name) + "].");
            return;
        }
        if (!section.is_table()) {
            problem(section, std::string(name) + " is " + describe(section) + "; it must be the section [" +
                                 std::string(name) + "].");
            return;
        }
        for (const auto& [key, value] : *section.as_table()) {
            const ConfigurationKey* known = findKey(name, key.str());
            if (known == nullptr) {
                problem(value, "there is no key " + std::string(name) + '.' + std::string(key.str()) +
                                   "; the nearest known one is " + nearestKey(name, key.str()) + ".");
            } else {
                readKey(*known, value);
            }
        }
    }

    void refuse(const ConfigurationKey& key, const toml::node& value, const std::string& allowed) {
        const std::string name = std::string(key.section) + '.' + key.name;
        settings_.malformed.insert(name);
        problem(value, name + " is " + describe(value) + "; allowed is " + allowed + ".");
    }

    void readKey(const ConfigurationKey& key, const toml::node& value) {
        switch (key.kind) {
            case ValueKind::kText:
                if (const auto text = readText(key, value)) targetOf(key) = modified(value, *text);
                break;
            case ValueKind::kPath:
                if (const auto text = readText(key, value)) targetOf(key) = resolved(value, *text);
                break;
            case ValueKind::kInteger:
                if (const auto* number = value.as_integer()) {
                    targetOf(key) = std::to_string(number->get());
                } else {
                    refuse(key, value, "an integer");
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
                readColumns(key, value);
                break;
        }
    }

    std::string& targetOf(const ConfigurationKey& key) {
        return key.text != nullptr ? settings_.*key.text : settings_.connection[key.name];
    }

    std::optional<std::string> readText(const ConfigurationKey& key, const toml::node& value) {
        if (const auto* text = value.as_string()) return text->get();
        refuse(key, value, "a text in quotes");
        return std::nullopt;
    }

    std::string modified(const toml::node& value, const std::string& text) {
        std::string result;
        if (!appendModifiedUtf8(text, result)) problem(value, inQuotes(text) + " is no UTF-8.");
        return result;
    }

    void readFlag(const ConfigurationKey& key, const toml::node& value) {
        const auto* flag = value.as_boolean();
        const auto* number = value.as_integer();
        const int64_t level = flag != nullptr ? flag->get() : number != nullptr ? number->get() : -1;
        if (level == 0 || level == 1) {
            targetOf(key) = std::to_string(level);
        } else {
            refuse(key, value, "true, false, 1 or 0 without quotes");
        }
    }

    void readLogLevel(const ConfigurationKey& key, const toml::node& value) {
        const auto* level = value.as_integer();
        if (level != nullptr && level->get() >= 0 && level->get() <= kHighestLogLevel) {
            settings_.logLevel = static_cast<int>(level->get());
        } else {
            refuse(key, value, "an integer from 0 (least) to 7 (every step)");
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
            refuse(key, value, "a list of texts in quotes");
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

    void readColumns(const ConfigurationKey& key, const toml::node& value) {
        constexpr char kAllowed[] =
            R"(a list of tables such as { name = "Symbol", type = "string", key = true })";
        const toml::array* list = value.as_array();
        if (list == nullptr) {
            refuse(key, value, kAllowed);
            return;
        }
        std::set<std::string> names;
        for (const toml::node& element : *list) {
            const toml::table* table = element.as_table();
            if (table == nullptr) {
                refuse(key, element, kAllowed);
                continue;
            }
            if (const auto column = readColumn(*table)) {
                if (!names.insert(column->name).second)
                    problem(element, "there are two columns " + inQuotes(toUtf8(column->name)) +
                                         "; every name must be different.");
                settings_.columns.push_back(*column);
            } else {
                settings_.malformed.insert("stream.columns");
            }
        }
    }

    std::optional<Column> readColumn(const toml::table& table) {
        for (const auto& [key, value] : table) {
            const std::string nearest = nearestColumnKey(key.str());
            if (nearest != key.str())
                problem(value, "a column has no key " + std::string(key.str()) +
                                   "; the nearest known one is " + nearest + ".");
        }
        const auto name = table["name"].value_exact<std::string>().value_or("");
        if (name.empty()) {
            problem(table, "this column has no name; it needs one, as in name = \"Symbol\".");
            return std::nullopt;
        }
        const toml::node* type = table.get("type");
        const auto* typeText = type != nullptr ? type->as_string() : nullptr;
        const auto code = typeText != nullptr ? typeCode(typeText->get()) : std::nullopt;
        if (!code) {
            problem(type != nullptr ? *type : table,
                    "column " + inQuotes(name) + " has " +
                        (type == nullptr       ? "no type"
                         : typeText == nullptr ? "as its type " + describe(*type)
                                               : "the unknown type " + inQuotes(typeText->get())) +
                        "; the types are " + typeNames() + ".");
            return std::nullopt;
        }
        const toml::node* key = table.get("key");
        if (key != nullptr && !key->is_boolean())
            problem(*key, "key of column " + inQuotes(name) + " is " + describe(*key) +
                              "; allowed are true and false without quotes.");
        return Column{modified(table, name), *code, table["key"].value_or(false)};
    }

    void checkStream() {
        if (settings_.streamName.empty() && !settings_.malformed.contains("stream.name"))
            missing("the section [stream] has no name; it needs one, as in name = \"Trades\".");
        if (settings_.columns.empty() && !settings_.malformed.contains("stream.columns"))
            missing(
                "the section [stream] has no columns; it needs at least one, as in "
                "columns = [{ name = \"Symbol\", type = \"string\" }].");
    }

    // Last of all problems: it has no place in the file.
    void missing(const std::string& sentence) {
        problems_.push_back({std::numeric_limits<std::uint32_t>::max(), file_ + ": " + sentence});
    }

    // The adapter passes an absent format on as the empty text, which as a format accepts anything; a server
    // hands in the defaults instead.
    void addDefaults() {
        settings_.connection.emplace("timeFormat", kDefaultTimeFormat);
        settings_.connection.emplace("dateFormat", kDefaultDateFormat);
        settings_.connection.emplace("timestampFormat", kDefaultDateFormat);
    }

    std::string file_;
    std::vector<Problem> problems_;
    Settings settings_;
};

}  // namespace

std::optional<Settings> readSettings(const std::string& file, const std::vector<std::string>& overrides,
                                     std::vector<std::string>& problems, StreamSection stream) {
    Reader reader(file);
    std::optional<Settings> settings = reader.read(overrides, stream);
    for (std::string& problem : reader.problems()) problems.push_back(std::move(problem));
    return settings;
}

}  // namespace host
