#include "host/toolkit/Catalogue.h"

#include <array>
#include <fstream>

#include "host/toolkit/Context.h"
#include "host/toolkit/NewText.h"
#include "host/toolkit/RowType.h"
#include "host/values/ModifiedUtf8.h"
#include "toolkit/kel_adapter_util.h"

namespace host {

namespace {

constexpr std::string_view kBlanks = " \t\r";

std::string_view trimmed(std::string_view text) {
    const size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// Puts parameter n where the text says {n}; what names no parameter stays as it is.
std::string filled(std::string_view text, std::span<const char* const> parameters) {
    std::string result;
    for (size_t at = 0; at < text.size();) {
        const size_t index = static_cast<size_t>(text.size() - at > 2 ? text[at + 1] - '0' : -1);
        if (text[at] == '{' && index < parameters.size() && text[at + 2] == '}') {
            result += orEmpty(parameters[index]);
            at += 3;
        } else {
            result += text[at++];
        }
    }
    return result;
}

}  // namespace

bool Catalogue::load(const std::string& file, std::string& error) {
    std::ifstream in(file);
    error = in ? "" : "cannot be read";
    decltype(texts_) texts;
    std::string line;
    for (int number = 1; error.empty() && std::getline(in, line); ++number) {
        const std::string_view content = trimmed(line);
        if (content.empty() || content.front() == '#') continue;
        const size_t equals = content.find('=');
        const std::string key(trimmed(content.substr(0, equals)));
        std::string text = key + ": ";
        if (equals == std::string_view::npos || key.empty() ||
            !appendModifiedUtf8(trimmed(content.substr(equals + 1)), text)) {
            error = "has something else than \"key = text\" in UTF-8 in line " + std::to_string(number);
        } else if (!texts.emplace(key, std::move(text)).second) {
            error = "has a key for the second time in line " + std::to_string(number);
        }
    }
    if (error.empty()) {
        texts_ = std::move(texts);
        return true;
    }
    error = "The message catalogue " + file + ' ' + error + "; messages are shown as their keys.";
    return false;
}

char* Catalogue::newMessage(const char* key, std::span<const char* const> parameters) const {
    const auto found = texts_.find(std::string_view(orEmpty(key)));
    if (found != texts_.end()) {
        return parameters.empty() ? host::newText(found->second)
                                  : host::newText(filled(found->second, parameters));
    }
    std::string text = orEmpty(key);
    for (const char* parameter : parameters) text.append(" ").append(orEmpty(parameter));
    return host::newText(text);
}

Catalogue& sharedCatalogue() {
    static Catalogue catalogue;
    return catalogue;
}

bool loadCatalogue(const std::string& file, std::string& error) {
    return sharedCatalogue().load(file, error);
}

namespace {

// The severity digit of a key such as "300281-7_JMSIN_ADAPTER_RESET".
int severity(const char* key) {
    constexpr std::string_view kDigits = "0123456789";
    constexpr size_t kNumberLength = 6;
    const std::string_view text = orEmpty(key);
    const bool isKey = text.size() > kNumberLength + 2 && text.find_first_not_of(kDigits) == kNumberLength &&
                       text[kNumberLength] == '-' &&
                       kDigits.find(text[kNumberLength + 1]) != std::string_view::npos &&
                       text[kNumberLength + 2] == '_';
    return isKey ? text[kNumberLength + 1] - '0' : -1;
}

template <typename... Parameters>
char* message(const char* key, Parameters... parameters) {
    const std::array<const char*, sizeof...(Parameters)> all = {parameters...};
    return sharedCatalogue().newMessage(key, all);
}

}  // namespace

}  // namespace host

extern "C" {

char* getL10NMessage(void* /*callback*/, const char* key) { return host::message(key); }
char* getL10NMessageWithParam(void* /*callback*/, const char* key, const char* p1) {
    return host::message(key, p1);
}
char* getL10NMessageWithTwoParams(void* /*callback*/, const char* key, const char* p1, const char* p2) {
    return host::message(key, p1, p2);
}
char* getL10NMessageWithThreeParams(void* /*callback*/, const char* key, const char* p1, const char* p2,
                                    const char* p3) {
    return host::message(key, p1, p2, p3);
}
char* getL10NMessageWithFourParams(void* /*callback*/, const char* key, const char* p1, const char* p2,
                                   const char* p3, const char* p4) {
    return host::message(key, p1, p2, p3, p4);
}
char* getL10NMessageWithFiveParams(void* /*callback*/, const char* key, const char* p1, const char* p2,
                                   const char* p3, const char* p4, const char* p5) {
    return host::message(key, p1, p2, p3, p4, p5);
}
char* getL10NMessageWithMultParams(void* /*callback*/, const char* key, int count, const char** params) {
    const size_t length = params != nullptr && count > 0 ? static_cast<size_t>(count) : 0;
    return host::sharedCatalogue().newMessage(key, {params, length});
}
void deleteL10NMessage(char* text) { delete[] text; }

int checkErrorSeverity(const char* key) { return host::severity(key) == 3 ? 1 : 0; }
int getErrorSeverity(const char* key) { return host::severity(key); }

}  // extern "C"
