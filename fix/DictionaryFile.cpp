#include "fix/DictionaryFile.h"

#include <pcre.h>

#include <array>
#include <fstream>
#include <memory>

namespace fix {

namespace {

constexpr char kEntry[] = R"((\w+)=(\w+))";

class EntryPattern {
public:
    bool match(const std::string& line, std::string& tag, std::string& name) const {
        constexpr int kPairs = 3;
        std::array<int, 9> offsets{};  // three pairs; the library works in the last third
        const int pairs = pcre_exec(code_.get(), nullptr, line.data(), static_cast<int>(line.size()), 0, 0,
                                    offsets.data(), static_cast<int>(offsets.size()));
        if (pairs != kPairs) return false;
        tag = line.substr(offsets[2], offsets[3] - offsets[2]);
        name = line.substr(offsets[4], offsets[5] - offsets[4]);
        return true;
    }

private:
    struct Release {
        void operator()(pcre* code) const { pcre_free(code); }
    };
    static pcre* compile() {
        const char* error = nullptr;
        int offset = 0;
        return pcre_compile(kEntry, 0, &error, &offset, nullptr);
    }

    // Null, which matches nothing, if the library could not compile it.
    const std::unique_ptr<pcre, Release> code_{compile()};
};

}  // namespace

std::optional<DictionaryEntries> readDictionary(const std::string& path) {
    static const EntryPattern pattern;
    std::ifstream file(path);
    DictionaryEntries entries;
    std::string line, tag, name;
    while (std::getline(file, line)) {
        if (pattern.match(line, tag, name)) entries.emplace_back(tag, name);
    }
    // A directory opens, and only reading it fails.
    if (!file.is_open() || file.bad()) return std::nullopt;
    return entries;
}

}  // namespace fix
