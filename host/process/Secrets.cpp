#include "host/process/Secrets.h"

#include <algorithm>
#include <cctype>

#include "host/values/Text.h"

namespace host {

namespace {

constexpr char kMask[] = "***";
constexpr std::string_view kNames[] = {"password", "passwd", "passphrase", "credentials"};
constexpr std::string_view kBlanks = " \t\r\n";
constexpr size_t kNone = std::string_view::npos;

bool isOneOf(std::string_view characters, char c) { return characters.find(c) != kNone; }

bool isOfName(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || isOneOf("._-", c); }

// Where the next name begins that has one of the words in it, from the word on.
size_t findName(std::string_view text, size_t from) {
    const auto isSame = [](char c, char lower) { return lowerCase(c) == lower; };
    size_t first = text.size();
    for (const std::string_view name : kNames) {
        const auto* end = text.data() + first;
        const auto* found = std::search(text.data() + from, end, name.begin(), name.end(), isSame);
        if (found != end) first = static_cast<size_t>(found - text.data());
    }
    return first;
}

// Whether a quote ends what it stands behind; a password may have one too.
bool closes(std::string_view text, size_t quote) {
    return quote + 1 == text.size() || isOneOf(" \t\r\n.,;:)]}", text[quote + 1]);
}

// In a URL these separate, but may stand in a password: there is an end only where nothing follows, or more
// parameters or addresses do.
bool separates(std::string_view text, size_t at) {
    if (text[at] == '&') return true;
    if (!isOneOf(";,()", text[at])) return false;
    const std::string_view rest = text.substr(at + 1);
    const std::string_view next = rest.substr(0, rest.find_first_of("&;,()\" \t\r\n"));
    return next.empty() || next.find_first_of("=:") != kNone;
}

size_t endOfValue(std::string_view text, size_t name, size_t begin) {
    size_t word = text.find_last_of(" \t\r\n\"", name) + 1;
    const bool isQuoted = word > 0 && text[word - 1] == '"';
    const bool isJvmOption = text.substr(word).starts_with("-D");
    for (size_t at = begin; at < text.size(); ++at) {
        if (text[at] == '"' && closes(text, at)) return at;
        if (!isQuoted && isOneOf(kBlanks, text[at])) return at;
        if (!isJvmOption && separates(text, at)) return at;
    }
    return text.size();
}

// Appends the text from `from` on up to the next value of such a name, and *** for that; gives where it ends.
size_t appendToNextValue(std::string_view text, size_t from, std::string& out) {
    const size_t name = findName(text, from);
    size_t begin = name;
    while (begin < text.size() && isOfName(text[begin])) ++begin;
    begin = std::min(text.find_first_not_of(kBlanks, begin), text.size());
    if (begin == text.size() || text[begin] != '=') {
        out += text.substr(from, begin - from);
        return begin;
    }
    begin = std::min(text.find_first_not_of(kBlanks, begin + 1), text.size());
    size_t end = endOfValue(text, name, begin);
    if (begin < end && isOneOf("\"'", text[begin])) {
        end = std::min(text.find(text[begin], begin + 1), text.size());
        ++begin;
    }
    out += text.substr(from, begin - from);
    if (begin < end) out += kMask;
    return end;
}

std::string withoutNamed(std::string_view text) {
    std::string result;
    for (size_t at = 0; at < text.size();) at = appendToNextValue(text, at, result);
    return result;
}

// Where the part of a URL ends, from `begin` on, that may be user:password@. A database's password may have
// in it whatever else ends a URL.
size_t endOfLogin(std::string_view text, size_t begin, bool isDatabase) {
    if (!isDatabase) return std::min(text.find_first_of("/?#\" \t\r\n", begin), text.size());
    size_t end = begin;
    while (end < text.size() && !isOneOf(kBlanks, text[end]) && !(text[end] == '"' && closes(text, end)))
        ++end;
    const std::string_view url = text.substr(begin, end - begin);
    const bool isWhole = url.find_first_of("@/") != kNone || url.find(':') == kNone;
    return isWhole ? end : std::min(text.find_first_of("/\r\n", end), text.size());
}

// user:password@ behind the slashes.
std::string withoutLogins(std::string_view text) {
    constexpr std::string_view kSlashes = "://";
    std::string result;
    size_t from = 0;
    for (size_t at = text.find(kSlashes); at != kNone; at = text.find(kSlashes, at + 1)) {
        if (at < from) continue;  // within a password
        const std::string_view before = text.substr(0, at);
        const bool isDatabase = before.ends_with("postgresql") || before.ends_with("postgres");
        const size_t begin = at + kSlashes.size();
        const std::string_view login = text.substr(begin, endOfLogin(text, begin, isDatabase) - begin);
        const size_t host = login.rfind('@');
        const size_t colon = login.find(':');
        if (host == kNone || colon >= host) continue;
        (result += text.substr(from, begin + colon + 1 - from)) += kMask;
        from = begin + host;
    }
    return result += text.substr(from);
}

}  // namespace

std::string withoutSecrets(std::string_view text) { return withoutNamed(withoutLogins(text)); }

}  // namespace host
