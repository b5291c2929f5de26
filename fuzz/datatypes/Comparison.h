// Seeded comparison of the library with plain readings of its rules over the C library's functions.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <string_view>

namespace comparison {

class Random {
public:
    explicit Random(uint64_t seed) : words_(seed) {}
    uint64_t word() { return words_(); }
    uint64_t below(uint64_t bound) { return words_() % bound; }
    bool oneIn(uint64_t bound) { return below(bound) == 0; }
    char of(std::string_view letters) { return letters[below(letters.size())]; }
    // Numbers of all magnitudes alike.
    uint64_t number() { return word() >> below(64); }
    int64_t signedNumber() { return static_cast<int64_t>(oneIn(2) ? number() : 0 - number()); }

    std::string digits(size_t most) {
        std::string text;
        for (size_t count = below(most + 1); count > 0; --count) text += of("0123456789");
        return text;
    }

    // A text with a letter changed, added or taken away, in one case of `rarity`.
    std::string damaged(std::string text, std::string_view letters, uint64_t rarity) {
        if (!oneIn(rarity)) return text;
        const size_t at = below(text.size() + 1);
        if (oneIn(3)) return text.insert(at, 1, of(letters));
        if (at < text.size() && oneIn(2)) return text.erase(at, 1);
        if (at < text.size()) text[at] = of(letters);
        return text;
    }

private:
    std::mt19937_64 words_;
};

// Counts, and shows the first differences.
class Tally {
public:
    explicit Tally(const char* name) : name_(name) {}
    void compare(const std::string& input, const std::string& ours, const std::string& theirs) {
        ++compared_;
        if (ours == theirs) return;
        if (++different_ <= 5) {
            std::printf("%s of '%s': '%s' instead of '%s'\n", name_, input.c_str(), ours.c_str(),
                        theirs.c_str());
        }
    }
    // Prints the line of this comparison; false when something differed or nothing was compared.
    bool finish() const {
        std::printf("%-40s %10ld compared, %ld different\n", name_, compared_, different_);
        return different_ == 0 && compared_ != 0;
    }

private:
    const char* name_;
    long compared_ = 0;
    long different_ = 0;
};

bool compareNumbers(Random& random, long count);
bool compareDates(Random& random, long count);
bool compareFormatting(Random& random, long count);
bool compareDecimals(Random& random, long count);

}  // namespace comparison
