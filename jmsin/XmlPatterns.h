// Finds the element and the attributes of an XML message, by two regular expressions.
//
// The element pattern backtracks: its time grows with the square, for some texts the cube, of the text's
// length. So PCRE works under a match limit on texts of ordinary size; where it gives up, and for longer
// texts, a linear scanner decides that yields the very groups that the pattern would.
#pragma once

#include <pcre.h>

#include <optional>
#include <string_view>

namespace xml {

// The two groups of a match and where the whole match ends, as offsets into the text that was given.
struct Match {
    size_t nameBegin;
    size_t nameEnd;
    size_t valueBegin;
    size_t valueEnd;
    size_t end;
    bool operator==(const Match&) const = default;
};

// The linear forms, also on their own for comparison with the patterns.
std::optional<Match> scanElement(std::string_view text);
std::optional<Match> scanAttribute(std::string_view text);

class Pattern {
public:
    using Scanner = std::optional<Match> (*)(std::string_view);

    // A pattern that does not compile matches nothing.
    Pattern(const char* pattern, Scanner scanner);
    ~Pattern();
    Pattern(const Pattern&) = delete;
    Pattern& operator=(const Pattern&) = delete;

    // The first match of the pattern with both groups, or none.
    std::optional<Match> match(std::string_view text) const;

private:
    pcre* code_;
    pcre_extra* study_;
    Scanner scanner_;
};

// Group 1 (name) is the element's name, group 2 (value) its attributes.
inline constexpr char kElement[] = R"(\s*<\s*(\w+)(.*?)\s*/\>)";
// Group 1 (name) is the attribute's name, group 2 (value) what stands between the quotes.
inline constexpr char kAttribute[] = R"re(^\s*(\w+)\s*=\s*"(.*?)")re";

// The attribute that carries the opcode.
inline constexpr char kOpcodeAttribute[] = "KEL_OPS";

// Hands each attribute of the element to `take(name, value)`. Where in the text none stands that should, or
// npos.
template <typename Take>
size_t walkAttributes(std::string_view text, const Match& element, const Pattern& pattern, Take take) {
    for (size_t at = element.valueBegin; at < element.valueEnd;) {
        const std::string_view rest = text.substr(at);
        const std::optional<Match> found = pattern.match(rest);
        if (!found) return at;
        take(rest.substr(found->nameBegin, found->nameEnd - found->nameBegin),
             rest.substr(found->valueBegin, found->valueEnd - found->valueBegin));
        at += found->end;
    }
    return std::string_view::npos;
}

inline std::string_view nameOf(std::string_view text, const Match& element) {
    return text.substr(element.nameBegin, element.nameEnd - element.nameBegin);
}

}  // namespace xml
