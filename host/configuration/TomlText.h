// A text in TOML before its parser sees it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace host {

// The text of a configuration file that the parser may see. None, with one sentence in `problem`: it cannot
// be read, or is too much for the parser.
std::optional<std::string> readTomlText(const std::string& file, std::string& problem);

// The line, counted from 1, of the first key with more dots than the parser is let see; 0: there is none.
std::size_t lineOfDeepKey(std::string_view toml);

inline constexpr char kDeepKey[] =
    ": a key has more than 32 parts; a configuration's have two, as in host.logLevel.";

}  // namespace host
