#include "host/configuration/Columns.h"

#include <optional>
#include <set>

#include "host/configuration/ConfigurationKeys.h"
#include "host/configuration/EnvelopeSources.h"
#include "host/values/ModifiedUtf8.h"
#include "host/values/Text.h"
#include "host/values/ValueTyping.h"

namespace host {

namespace {

constexpr char kKey[] = "stream.columns";

std::optional<Column> readColumn(const toml::table& table, Problems& problems) {
    for (const auto& [key, value] : table) {
        const std::string nearest = nearestColumnKey(key.str());
        if (nearest != key.str())
            problems.add(value, "a column has no key " + std::string(key.str()) +
                                    "; the nearest known one is " + nearest + ".");
    }
    const auto name = table["name"].value_exact<std::string>().value_or("");
    if (name.empty()) {
        problems.add(table, "this column has no name; it needs one, as in name = \"Symbol\".");
        return std::nullopt;
    }
    const toml::node* type = table.get("type");
    const auto* typeText = type != nullptr ? type->as_string() : nullptr;
    const auto code = typeText != nullptr ? typeCode(typeText->get()) : std::nullopt;
    if (!code) {
        problems.add(type != nullptr ? *type : table,
                     "column " + inQuotes(name) + " has " +
                         (type == nullptr       ? "no type"
                          : typeText == nullptr ? "as its type " + describe(*type)
                                                : "the unknown type " + inQuotes(typeText->get())) +
                         "; the types are " + typeNames() + ".");
        return std::nullopt;
    }
    const toml::node* key = table.get("key");
    if (key != nullptr && !key->is_boolean())
        problems.add(*key, "key of column " + inQuotes(name) + " is " + describe(*key) +
                               "; allowed are true and false without quotes.");
    return Column{modifiedText(table, name, problems), *code, table["key"].value_or(false)};
}

// Where the column's values come from; none: from the message's own fields.
std::optional<std::string> readSource(const toml::table& table, const Column& column, Problems& problems) {
    const toml::node* from = table.get("from");
    if (from == nullptr) return std::nullopt;
    const std::string name = inQuotes(toUtf8(column.name));
    const auto* text = from->as_string();
    if (text == nullptr) {
        problems.add(*from,
                     "from of column " + name + " is " + describe(*from) + "; allowed is a text in quotes.");
        return std::string();
    }
    const std::string fault = faultOfSource(text->get(), column.type);
    if (!fault.empty()) problems.add(*from, "column " + name + ' ' + fault);
    return modifiedText(*from, text->get(), problems);
}

}  // namespace

StreamColumns readColumns(const toml::node& value, Problems& problems) {
    constexpr char kAllowed[] =
        R"(a list of tables such as { name = "Symbol", type = "string", key = true })";
    StreamColumns columns;
    const toml::array* list = value.as_array();
    if (list == nullptr) {
        problems.refuse(kKey, value, kAllowed);
        return columns;
    }
    std::set<std::string> names;
    for (const toml::node& element : *list) {
        const toml::table* table = element.as_table();
        if (table == nullptr) {
            problems.refuse(kKey, element, kAllowed);
            continue;
        }
        if (const auto column = readColumn(*table, problems)) {
            if (!names.insert(column->name).second)
                problems.add(element, "there are two columns " + inQuotes(toUtf8(column->name)) +
                                          "; every name must be different.");
            if (auto from = readSource(*table, *column, problems)) {
                const size_t position = columns.own.size() + columns.envelope.size();
                columns.envelope.push_back({*column, position, std::move(*from)});
            } else {
                columns.own.push_back(*column);
            }
        } else {
            problems.markMalformed(kKey);
        }
    }
    return columns;
}

}  // namespace host
