#include "host/configuration/Problems.h"

#include <algorithm>
#include <limits>

#include "host/values/ModifiedUtf8.h"
#include "host/values/Text.h"

namespace host {

void Problems::add(const toml::source_region& where, const std::string& sentence) {
    const std::string place = where.begin ? file_ + ":" + std::to_string(where.begin.line) : "--set";
    found_.push_back({where.begin.line, place + ": " + sentence});
}

void Problems::addMissing(const std::string& sentence) {
    found_.push_back({std::numeric_limits<std::uint32_t>::max(), file_ + ": " + sentence});
}

void Problems::refuse(const std::string& key, const toml::node& value, const std::string& allowed) {
    markMalformed(key);
    add(value, key + " is " + describe(value) + "; allowed is " + allowed + ".");
}

std::vector<std::string> Problems::sentences() const {
    std::vector<Problem> sorted = found_;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const Problem& one, const Problem& other) { return one.line < other.line; });
    std::vector<std::string> sentences;
    sentences.reserve(sorted.size());
    for (Problem& problem : sorted) sentences.push_back(std::move(problem.sentence));
    return sentences;
}

std::string describe(const toml::node& node) {
    if (const auto* text = node.as_string()) return "the text " + inQuotes(text->get());
    if (const auto* number = node.as_integer()) return "the integer " + std::to_string(number->get());
    if (const auto* flag = node.as_boolean()) return flag->get() ? "true" : "false";
    if (node.is_floating_point()) return "a number with a fraction";
    if (node.is_array()) return "a list";
    if (node.is_table()) return "a table";
    return "a date or time";
}

std::string modifiedText(const toml::node& value, const std::string& text, Problems& problems) {
    std::string result;
    if (!appendModifiedUtf8(text, result)) problems.add(value, inQuotes(text) + " is no UTF-8.");
    return result;
}

}  // namespace host
