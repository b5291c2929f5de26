#include "host/configuration/TomlText.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace host {

namespace {

constexpr size_t kMostBytes = 1 << 20;

// The parser makes a table of each part of a dotted key, and takes them apart again by recursion: many of
// them exhaust the stack.
constexpr size_t kMostKeyParts = 32;

class Scan {
public:
    explicit Scan(std::string_view toml) : rest_(toml) {}

    size_t lineOfDeepKey() {
        while (!rest_.empty()) {
            const char c = rest_.front();
            if (c == '"' || c == '\'') {
                skip(lengthOfText(c));
            } else if (c == '#') {
                skip(rest_.find('\n'));
            } else {
                if (c == '.' && ++dots_ == kMostKeyParts) return line_;
                if (c != '.' && !continuesKey(c)) dots_ = 0;
                skip(1);
            }
        }
        return 0;
    }

private:
    // Bare parts, and the blanks that may stand around the dots.
    static bool continuesKey(char c) {
        const auto isWithin = [c](char first, char last) { return c >= first && c <= last; };
        return isWithin('a', 'z') || isWithin('A', 'Z') || isWithin('0', '9') || c == '-' || c == '_' ||
               c == ' ' || c == '\t';
    }

    void skip(size_t count) {
        count = std::min(count, rest_.size());
        line_ += static_cast<size_t>(std::count(rest_.begin(), rest_.begin() + count, '\n'));
        rest_.remove_prefix(count);
    }

    // Of the text that begins here, with its quotes; one that does not end is cut off where it must have.
    size_t lengthOfText(char quote) const {
        const bool isLong = rest_.starts_with(std::string(3, quote));
        const std::string_view end = rest_.substr(0, isLong ? 3 : 1);
        size_t at = end.size();
        while (at < rest_.size() && !rest_.substr(at).starts_with(end)) {
            if (!isLong && rest_[at] == '\n') return at;
            at += quote == '"' && rest_[at] == '\\' ? 2 : 1;
        }
        at += end.size();
        // Up to two quotes may stand before the three that end a long text.
        for (int more = 0; isLong && more < 2 && at < rest_.size() && rest_[at] == quote; ++more) ++at;
        return at;
    }

    std::string_view rest_;
    size_t line_ = 1;
    size_t dots_ = 0;  // of the key so far
};

}  // namespace

std::optional<std::string> readTomlText(const std::string& file, std::string& problem) {
    // Opening a pipe would wait for its writer.
    std::error_code ignored;
    std::ifstream in(fs::is_regular_file(file, ignored) ? file : std::string());
    std::string text(kMostBytes + 1, '\0');
    in.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<size_t>(in.gcount()));
    if (!in.is_open() || in.bad()) {
        problem = file + " cannot be read; it must be a regular file with a configuration in TOML.";
    } else if (text.size() > kMostBytes) {
        problem = file + " is longer than " + std::to_string(kMostBytes) +
                  " bytes, the most that a configuration may have.";
    } else if (const size_t line = lineOfDeepKey(text); line > 0) {
        problem = file + ':' + std::to_string(line) + kDeepKey;
    } else {
        return text;
    }
    return std::nullopt;
}

size_t lineOfDeepKey(std::string_view toml) { return Scan(toml).lineOfDeepKey(); }

}  // namespace host
