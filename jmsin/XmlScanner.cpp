#include "jmsin/XmlScanner.h"

#include <algorithm>

namespace xml {

namespace {

// As in the patterns in the C locale: ASCII only, and vertical tab is white space.
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
std::optional<Match> findElement(std::string_view text) {
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

std::optional<Match> findAttribute(std::string_view text) {
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

}  // namespace xml
