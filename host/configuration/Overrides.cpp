#include "host/configuration/Overrides.h"

#include "host/configuration/ConfigurationKeys.h"
#include "host/configuration/TomlText.h"

namespace host {

namespace {

// The text as a TOML value; false when it is none.
bool insertParsed(toml::table& target, const std::string& name, const std::string& text) {
    try {
        toml::table parsed = toml::parse("value = " + text);
        // A copy has no place in a source, which tells overrides from the file's values.
        parsed.get("value")->visit([&](const auto& value) { target.insert_or_assign(name, value); });
        return true;
    } catch (const toml::parse_error&) {
        return false;
    }
}

}  // namespace

void applyOverride(const std::string& override, toml::table& document, Problems& problems) {
    const size_t equals = override.find('=');
    const size_t dot = override.find('.');
    if (equals == std::string::npos || dot == std::string::npos || dot > equals) {
        problems.addFirst("--set " + override + ": this is not of the form section.name=value.");
        return;
    }
    const std::string section = override.substr(0, dot);
    const std::string name = override.substr(dot + 1, equals - dot - 1);
    const std::string text = override.substr(equals + 1);
    if (document.get_as<toml::table>(section) == nullptr) document.insert_or_assign(section, toml::table());
    toml::table& target = *document.get_as<toml::table>(section);
    const ConfigurationKey* key = findKey(section, name);
    const bool takesText = key == nullptr || isText(*key);
    if (!takesText && lineOfDeepKey(text) > 0) {
        problems.addFirst("--set " + section + '.' + name + kDeepKey);
        return;
    }
    if (takesText || !insertParsed(target, name, text)) target.insert_or_assign(name, text);
}

}  // namespace host
