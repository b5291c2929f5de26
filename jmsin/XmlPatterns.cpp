#include "jmsin/XmlPatterns.h"

#include <algorithm>

namespace xml {

namespace {

// PCRE counts its steps anew at every place where a match may begin, and does not count the blanks that it
// runs over. So the text's length must be bounded too: together they keep the worst text below a few
// milliseconds.
constexpr unsigned long kMatchLimit = 1000;
constexpr size_t kMatchTextLimit = 2048;

// PCRE's own tables in the C locale: ASCII only, and vertical tab is white space.
bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool isWord(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

size_t skip(std::string_view text, size_t from, bool (*accepts)(char)) {
    return static_cast<size_t>(
        std::find_if_not(text.begin() + static_cast<std::ptrdiff_t>(from), text.end(), accepts) -
        text.begin());
}

}  // namespace

// "." stops at a line feed while \s does not: between the name and the white space before "/>" there must be
// none.
std::optional<Match> scanElement(std::string_view text) {
    size_t slash = 0;      // the first "/>" behind the name
    size_t valueEnd = 0;   // where the white space before it begins
    size_t lineBegin = 0;  // where the line of valueEnd begins: names that end before it fail
    for (size_t open = text.find('<'); open != std::string_view::npos; open = text.find('<', open + 1)) {
        const size_t nameBegin = skip(text, open + 1, isSpace);
        const size_t nameEnd = skip(text, nameBegin, isWord);
        if (nameEnd == nameBegin) continue;
        if (slash < nameEnd) {
            slash = text.find("/>", nameEnd);
            if (slash == std::string_view::npos) return std::nullopt;
            valueEnd = slash;
            while (isSpace(text[valueEnd - 1])) --valueEnd;
            const size_t feed = text.substr(0, valueEnd).rfind('\n');
            lineBegin = feed == std::string_view::npos ? 0 : feed + 1;
        }
        if (nameEnd >= lineBegin) return Match{nameBegin, nameEnd, nameEnd, valueEnd, slash + 2};
    }
    return std::nullopt;
}

std::optional<Match> scanAttribute(std::string_view text) {
    const size_t nameBegin = skip(text, 0, isSpace);
    const size_t nameEnd = skip(text, nameBegin, isWord);
    const size_t equals = skip(text, nameEnd, isSpace);
    if (nameEnd == nameBegin || equals == text.size() || text[equals] != '=') return std::nullopt;
    const size_t quote = skip(text, equals + 1, isSpace);
    if (quote == text.size() || text[quote] != '"') return std::nullopt;
    const size_t stop = text.find_first_of("\"\n", quote + 1);
    if (stop == std::string_view::npos || text[stop] != '"') return std::nullopt;
    return Match{nameBegin, nameEnd, quote + 1, stop, stop + 1};
}

Pattern::Pattern(const char* pattern, Scanner scanner) : scanner_(scanner) {
    const char* error = nullptr;
    int errorOffset = 0;
    code_ = pcre_compile(pattern, 0, &error, &errorOffset, nullptr);
    study_ = code_ != nullptr ? pcre_study(code_, PCRE_STUDY_JIT_COMPILE | PCRE_STUDY_EXTRA_NEEDED, &error)
                              : nullptr;
    if (study_ == nullptr) return;
    study_->flags |= PCRE_EXTRA_MATCH_LIMIT | PCRE_EXTRA_MATCH_LIMIT_RECURSION;
    study_->match_limit = study_->match_limit_recursion = kMatchLimit;
}

Pattern::~Pattern() {
    if (study_ != nullptr) pcre_free_study(study_);
    if (code_ != nullptr) pcre_free(code_);
}

std::optional<Match> Pattern::match(std::string_view text) const {
    if (code_ == nullptr) return std::nullopt;
    if (study_ == nullptr || text.size() > kMatchTextLimit) return scanner_(text);
    int offsets[9];
    const int found = pcre_exec(code_, study_, text.data(), static_cast<int>(text.size()), 0, 0, offsets,
                                std::size(offsets));
    switch (found) {
        case 3:  // the whole match and two groups
            return Match{static_cast<size_t>(offsets[2]), static_cast<size_t>(offsets[3]),
                         static_cast<size_t>(offsets[4]), static_cast<size_t>(offsets[5]),
                         static_cast<size_t>(offsets[1])};
        case PCRE_ERROR_MATCHLIMIT:
        case PCRE_ERROR_RECURSIONLIMIT:
        case PCRE_ERROR_JIT_STACKLIMIT:
            return scanner_(text);
        default:
            return std::nullopt;
    }
}

}  // namespace xml
