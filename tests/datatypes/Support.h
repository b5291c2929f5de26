// What the data type tests share.
#pragma once

#include <gtest/gtest.h>

#include <clocale>
#include <cstring>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

#include "datatypes/DataTypes.h"

namespace support {

// A line of a file in data/: words, or texts in quotes with C's escapes of white space; NULL is a null pointer.
struct Case {
    std::string line;
    std::vector<std::string> fields;

    const std::string& operator[](size_t i) const { return fields.at(i); }
    const char* pointer(size_t i) const { return fields.at(i) == "NULL" ? nullptr : fields[i].c_str(); }
    int number(size_t i) const { return std::stoi(fields.at(i)); }
};

// The lines of a file, without comments and empty ones.
inline std::vector<Case> readCases(const std::string& file) {
    std::ifstream in(DATATYPES_TEST_DATA "/" + file);
    std::vector<Case> cases;
    for (std::string line, word; std::getline(in, line);) {
        if (line.empty() || line[0] == '#') continue;
        cases.push_back({line, {}});
        for (size_t at; (at = line.find('\\')) != std::string::npos;)
            line.replace(at, 2, 1, "\t\n\v\f\r"[std::string_view("tnvfr").find(line.at(at + 1))]);
        std::istringstream words(line);
        while (words >> std::quoted(word)) cases.back().fields.push_back(word);
    }
    EXPECT_FALSE(cases.empty()) << file;
    return cases;
}

// Puts the settings and the locale back when the test ends.
struct SettingsRestored : testing::Test {
    ~SettingsRestored() override {
        DataTypes::setLegacyMoneyPrecision(4);
        DataTypes::setDecimalSize(6);
        DataTypes::setDateSize(8);
        DataTypes::g_timeSize = 8;
        DataTypes::setDateFormat(const_cast<char*>("%Y-%m-%dT%H:%M:%S"));
        setlocale(LC_ALL, "C");
    }
};

// A buffer of exactly the wanted size between bytes that must stay as they are.
class GuardedBuffer {
public:
    explicit GuardedBuffer(size_t size) : bytes_(size + 2 * kGuard, kFill) {}
    ~GuardedBuffer() { EXPECT_EQ(bytes_.substr(0, kGuard) + bytes_.substr(bytes_.size() - kGuard), std::string(2 * kGuard, kFill)); }
    char* text() { return bytes_.data() + kGuard; }
    unsigned char* data() { return reinterpret_cast<unsigned char*>(text()); }
    // Whether the bytes from one on are as they were.
    bool untouched(size_t from = 0) const { return bytes_.find_first_not_of(kFill, kGuard + from) == std::string::npos; }

private:
    static constexpr size_t kGuard = 16;
    static constexpr char kFill = '\xa5';
    std::string bytes_;
};

inline std::string toHex(const unsigned char* bytes, unsigned int count) {
    std::string text;
    DataTypes::convertBinaryToHexString(bytes, count, text);
    return text;
}

// A decimal of a coefficient, and back.
inline DataTypes::FixedDecimalValue decimal(const std::string& coefficient, int precision, int scale) {
    DataTypes::UInt128 number = 0;
    for (const char c : coefficient) number = c == '-' ? 0 : number * 10 + static_cast<unsigned int>(c - '0');
    if (coefficient[0] == '-') number = 0 - number;
    return {static_cast<uint64_t>(number >> 64), static_cast<uint64_t>(number), static_cast<uint64_t>(precision << 8 | scale)};
}
inline std::string digits(DataTypes::UInt128 number) {
    return (number < 10 ? "" : digits(number / 10)) + static_cast<char>('0' + static_cast<int>(number % 10));
}
inline std::string show(const DataTypes::FixedDecimalValue& value) {
    const DataTypes::UInt128 number = DataTypes::UInt128{value.high} << 64 | value.low;
    const std::string coefficient = value.isNegative() ? "-" + digits(0 - number) : digits(number);
    return coefficient + "/" + std::to_string(value.precision()) + "," + std::to_string(value.scale());
}

}  // namespace support
