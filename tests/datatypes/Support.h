// What the data type tests share.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

#include "datatypes/DataTypes.h"

namespace support {

// A line of a file in data/: words, or texts in quotes with C's escapes; a bare - is a null pointer.
struct Case {
    std::string where;
    std::vector<std::string> fields;
    std::vector<bool> nulls;

    const std::string& operator[](size_t i) const { return fields.at(i); }
    const char* pointer(size_t i) const { return nulls.at(i) ? nullptr : fields[i].c_str(); }
    int number(size_t i) const { return std::stoi(fields.at(i)); }
};

inline std::string withoutEscapes(const std::string& text) {
    std::string plain;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            plain += text[i];
        } else if (text[++i] == 'x') {
            plain += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
            i += 2;
        } else {
            plain += std::string_view("\t\n\v\f\r")[std::string_view("tnvfr").find(text[i])];
        }
    }
    return plain;
}

// The lines of a file, without comments and empty ones; those that begin with a word when one is given,
// without it.
inline std::vector<Case> readCases(const std::string& file, const std::string& firstWord = "") {
    std::ifstream in(DATATYPES_TEST_DATA "/" + file);
    std::vector<Case> cases;
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        std::istringstream words(line);
        Case next{file + ":" + std::to_string(number) + ": " + line, {}, {}};
        for (std::string word; words >> std::ws && !words.eof();) {
            const bool quoted = words.peek() == '"';
            words >> std::quoted(word, '"', '\1');
            next.nulls.push_back(!quoted && word == "-");
            next.fields.push_back(quoted ? withoutEscapes(word) : word);
        }
        if (line.empty() || line[0] == '#' || (!firstWord.empty() && next[0] != firstWord)) continue;
        if (!firstWord.empty()) next.fields.erase(next.fields.begin());
        if (!firstWord.empty()) next.nulls.erase(next.nulls.begin());
        cases.push_back(next);
    }
    EXPECT_FALSE(cases.empty()) << file;
    return cases;
}

// Puts the settings back when the test ends.
struct SettingsRestored : testing::Test {
    ~SettingsRestored() override {
        DataTypes::setLegacyMoneyPrecision(4);
        DataTypes::setDecimalSize(6);
        DataTypes::setDateSize(8);
        DataTypes::g_timeSize = 8;
        char format[] = "%Y-%m-%dT%H:%M:%S";
        DataTypes::setDateFormat(format);
    }
};

// A buffer of exactly the wanted size between bytes that must stay as they are.
class GuardedBuffer {
public:
    explicit GuardedBuffer(size_t size) : bytes_(size + 2 * kGuard, kFill) {}
    ~GuardedBuffer() {
        for (size_t i = 0; i < kGuard; ++i)
            EXPECT_TRUE(bytes_[i] == kFill && bytes_[bytes_.size() - 1 - i] == kFill)
                << "outside the buffer, at a distance of " << kGuard - i;
    }
    unsigned char* data() { return bytes_.data() + kGuard; }
    char* text() { return reinterpret_cast<char*>(data()); }
    size_t size() const { return bytes_.size() - 2 * kGuard; }
    bool untouched() const { return bytes_ == std::vector<unsigned char>(bytes_.size(), kFill); }

private:
    static constexpr size_t kGuard = 16;
    static constexpr unsigned char kFill = 0xa5;
    std::vector<unsigned char> bytes_;
};

inline std::string toHex(const unsigned char* bytes, size_t count) {
    std::string text;
    DataTypes::convertBinaryToHexString(bytes, static_cast<unsigned int>(count), text);
    return text;
}

// A decimal of a coefficient, and back; coefficients as text.
inline DataTypes::FixedDecimalValue decimal(__int128_t coefficient, int precision, int scale) {
    return {static_cast<uint64_t>(coefficient >> 64), static_cast<uint64_t>(coefficient), static_cast<uint64_t>(precision << 8 | scale)};
}
inline __int128_t coefficientOf(const DataTypes::FixedDecimalValue& value) {
    return static_cast<__int128_t>(DataTypes::UInt128{value.high} << 64 | value.low);
}
inline std::string toText(__int128_t number) {
    std::string text;
    DataTypes::UInt128 rest = static_cast<DataTypes::UInt128>(number);
    for (rest = number < 0 ? 0 - rest : rest; rest != 0 || text.empty(); rest /= 10)
        text.insert(text.begin(), static_cast<char>('0' + static_cast<int>(rest % 10)));
    return (number < 0 ? "-" : "") + text;
}
inline __int128_t toNumber(const std::string& text) {
    DataTypes::UInt128 number = 0;
    for (const char c : text) number = c == '-' ? number : number * 10 + static_cast<unsigned int>(c - '0');
    return static_cast<__int128_t>(text[0] == '-' ? 0 - number : number);
}
inline __int128_t powerOfTen(int exponent) { return exponent == 0 ? 1 : 10 * powerOfTen(exponent - 1); }

}  // namespace support
