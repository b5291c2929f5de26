// The lines of a FIX dictionary file.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace fix {

// Tag and field name of each entry, in the file's order; of entries with the same tag or name the last
// counts.
using DictionaryEntries = std::vector<std::pair<std::string, std::string>>;

// An entry is the first "word=word" of a line, wherever it stands; lines without one are skipped. None: the
// file cannot be read.
std::optional<DictionaryEntries> readDictionary(const std::string& path);

}  // namespace fix
