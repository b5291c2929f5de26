// Finds the element and the attributes of an XML message, in time with its length.
//
// What counts as which is documented as two regular expressions, whose groups the scanner yields exactly.
// They are not run: matching the first takes time that grows with the square, for some texts the cube, of the
// length.
#pragma once

#include <optional>
#include <string_view>

namespace xml {

// Group 1 (name) is the element's name, group 2 (value) its attributes.
inline constexpr char kElement[] = R"(\s*<\s*(\w+)(.*?)\s*/\>)";
// Group 1 (name) is the attribute's name, group 2 (value) what stands between the quotes.
inline constexpr char kAttribute[] = R"re(^\s*(\w+)\s*=\s*"(.*?)")re";

// The attribute that carries the opcode.
inline constexpr char kOpcodeAttribute[] = "KEL_OPS";

// The two groups of a match and where the whole match ends, as offsets into the text that was given.
struct Match {
    size_t nameBegin;
    size_t nameEnd;
    size_t valueBegin;
    size_t valueEnd;
    size_t end;
    bool operator==(const Match&) const = default;
};

// The first match of kElement, and that of kAttribute at the text's begin.
std::optional<Match> findElement(std::string_view text);
std::optional<Match> findAttribute(std::string_view text);

// Hands each attribute of the element to `take(name, value)`. Where in the text none stands that should, or
// npos.
template <typename Take>
size_t walkAttributes(std::string_view text, const Match& element, Take take) {
    for (size_t at = element.valueBegin; at < element.valueEnd;) {
        const std::string_view rest = text.substr(at);
        const std::optional<Match> found = findAttribute(rest);
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
