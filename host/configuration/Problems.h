// What is wrong in a configuration file, as it is found.
#pragma once

#include <toml++/toml.h>

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace host {

class Problems {
public:
    explicit Problems(std::string file) : file_(std::move(file)) {}

    // At the place in the file; a value that an override put in has none.
    void add(const toml::source_region& where, const std::string& sentence);
    void add(const toml::node& node, const std::string& sentence) { add(node.source(), sentence); }
    void addFirst(const std::string& sentence) { found_.push_back({kFirst, sentence}); }
    void addMissing(const std::string& sentence);  // behind all others: it has no place in the file

    // The key "section.name" has a value of the wrong kind.
    void refuse(const std::string& key, const toml::node& value, const std::string& allowed);
    void markMalformed(const std::string& key) { malformed_.insert(key); }
    const std::set<std::string>& malformed() const { return malformed_; }

    // In the order of the file; what the overrides brought comes first.
    std::vector<std::string> sentences() const;

private:
    static constexpr std::uint32_t kFirst = 0;

    struct Problem {
        std::uint32_t line;
        std::string sentence;
    };

    std::string file_;
    std::vector<Problem> found_;
    std::set<std::string> malformed_;
};

// What a value is, as a sentence says it.
std::string describe(const toml::node& node);

// The text of the value in modified UTF-8; where that is none, a problem.
std::string modifiedText(const toml::node& value, const std::string& text, Problems& problems);

}  // namespace host
