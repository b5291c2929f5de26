#include "util/StringUtils.h"

#include <regex.h>

#include <algorithm>
#include <cctype>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>

namespace MORVEX::Kel {

std::string& toLowerString(std::string& text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

void splitString(std::string& source, char delimiter, std::string& first, std::string& second) {
    const size_t at = source.find(delimiter);
    // Both parts are cut before either is assigned: a caller may pass the source itself as a part.
    std::string head = source.substr(0, at);
    std::string tail = at == std::string::npos ? std::string() : source.substr(at + 1);
    first = std::move(head);
    second = std::move(tail);
}

size_t splitString(std::string& source, char delimiter, std::vector<std::string>& fields) {
    const char* field = source.c_str();
    const char* const end = field + std::strlen(field);
    for (;;) {
        const char* const fieldEnd = std::find(field, end, delimiter);
        fields.emplace_back(field, fieldEnd);
        if (fieldEnd == end) return fields.size();
        field = fieldEnd + 1;
    }
}

void joinString(std::vector<std::string>& elements, char separator, std::string& joined) {
    std::string text;
    for (size_t i = 0; i < elements.size(); ++i) {
        if (i > 0) text += separator;
        text += elements[i];
    }
    joined = std::move(text);
}

void trimWhiteSpace(std::string& text) {
    std::replace(text.begin(), text.end(), '\t', ' ');
    const size_t last = text.find_last_not_of(' ');
    text.erase(last == std::string::npos ? 0 : last + 1);
    text.erase(0, text.find_first_not_of(' '));
    const auto bothSpaces = [](char a, char b) { return a == ' ' && b == ' '; };
    text.erase(std::unique(text.begin(), text.end(), bothSpaces), text.end());
}

std::string trimSpace(std::string& text) {
    text.erase(0, text.find_first_not_of(' '));
    const size_t last = text.find_last_not_of(' ');
    text.erase(last == std::string::npos ? 0 : last + 1);
    return text;
}

std::string strprintf(const char* format, ...) {
    char local[1024] = "";
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(local, sizeof local, format, arguments);
    va_end(arguments);
    if (length < static_cast<int>(sizeof local)) return local;

    const auto heap = std::make_unique<char[]>(static_cast<size_t>(length) + 1);
    va_start(arguments, format);
    std::vsnprintf(heap.get(), static_cast<size_t>(length) + 1, format, arguments);
    va_end(arguments);
    return heap.get();
}

bool regexMatch(std::string& pattern, std::string& subject) {
    regex_t expression{};
    const bool matches = regcomp(&expression, pattern.c_str(), REG_EXTENDED | REG_NOSUB) == 0 &&
                         regexec(&expression, subject.c_str(), 0, nullptr, 0) == 0;
    regfree(&expression);  // harmless after a failed regcomp in this C library
    return matches;
}

}  // namespace MORVEX::Kel
