// Decimals, against digit strings worked out by hand, 128-bit division and strtod.
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <optional>

#include "datatypes/DataTypes.h"
#include "fuzz/datatypes/Comparison.h"

namespace comparison {
namespace {

using DataTypes::FixedDecimalValue;
using DataTypes::UInt128;

__extension__ typedef __int128 Int128;

std::string show(Int128 number) {
    std::string text;
    UInt128 rest = number < 0 ? 0 - static_cast<UInt128>(number) : static_cast<UInt128>(number);
    do text.insert(text.begin(), static_cast<char>('0' + static_cast<int>(rest % 10)));
    while ((rest /= 10) != 0);
    return (number < 0 ? "-" : "") + text;
}

Int128 coefficientOf(const FixedDecimalValue& value) {
    return static_cast<Int128>(UInt128{value.high} << 64 | value.low);
}

FixedDecimalValue make(Int128 coefficient) {
    return {static_cast<uint64_t>(coefficient >> 64), static_cast<uint64_t>(coefficient), 0};
}

// The coefficient that a text stands for at a scale, digit by digit.
std::string coefficientByHand(std::string text, int precision, int scale) {
    const auto blank = [](char c) { return isspace(static_cast<unsigned char>(c)) != 0; };
    while (!text.empty() && blank(text.back())) text.pop_back();
    while (!text.empty() && blank(text.front())) text.erase(0, 1);
    const bool negative = !text.empty() && text[0] == '-';
    if (!text.empty() && (text[0] == '-' || text[0] == '+')) text.erase(0, 1);
    long shift = scale;
    const size_t e = text.find_first_of("eE");
    if (e != std::string::npos) {
        const std::string exponent = text.substr(e + 1);
        const std::string plain =
            exponent.substr(!exponent.empty() && (exponent[0] == '+' || exponent[0] == '-') ? 1 : 0);
        if (plain.empty() || plain.find_first_not_of("0123456789") != std::string::npos) return "refused";
        shift += std::clamp(std::strtol(exponent.c_str(), nullptr, 10), -1000000L, 1000000L);
        text.erase(e);
    }
    const size_t point = text.find('.');
    if (point != std::string::npos) {
        shift -= static_cast<long>(text.size() - point - 1);
        text.erase(point, 1);
    }
    if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos) return "refused";
    text.erase(0, std::min(text.find_first_not_of('0'), text.size()));
    if (text.empty()) return "0";
    if (shift > 100 || static_cast<long>(text.size()) + shift > 100) return "refused";
    if (shift >= 0) {
        text.append(static_cast<size_t>(shift), '0');
    } else {
        const size_t cut = static_cast<size_t>(-shift);
        if (cut > text.size()) return "0";
        const std::string tail = text.substr(text.size() - cut);
        text.resize(text.size() - cut);
        const std::string half = "5" + std::string(cut - 1, '0');
        const bool odd = !text.empty() && (text.back() - '0') % 2 != 0;
        if (tail > half || (tail == half && odd)) {
            size_t at = text.size();
            while (at > 0 && text[at - 1] == '9') text[--at] = '0';
            if (at == 0)
                text.insert(0, 1, '1');
            else
                ++text[at - 1];
        }
    }
    if (text.empty()) return "0";
    if (text.size() > static_cast<size_t>(precision)) return "refused";
    return (negative ? "-" : "") + text;
}

std::string pointPlaced(Int128 coefficient, int scale) {
    std::string digits = show(coefficient < 0 ? -coefficient : coefficient);
    if (scale > 0) {
        if (digits.size() <= static_cast<size_t>(scale))
            digits.insert(0, static_cast<size_t>(scale) + 1 - digits.size(), '0');
        digits.insert(digits.size() - static_cast<size_t>(scale), ".");
    }
    return (coefficient < 0 ? "-" : "") + digits;
}

std::string decimalText(Random& random) {
    std::string text = random.oneIn(3) ? std::string(1, random.of("+- ")) : "";
    text += random.digits(random.oneIn(5) ? 50 : 20);
    if (random.oneIn(2)) text += "." + random.digits(random.oneIn(5) ? 50 : 14);
    if (random.oneIn(4)) text += std::string(1, random.of("eE")) + random.of("+-1") + random.digits(2);
    // Ties are where rounding can go wrong.
    if (random.oneIn(4)) text += "5" + std::string(random.below(40), '0');
    return random.damaged(text, "0123456789+-.eE /:\xae\xb0", 10);
}

void compareText(Random& random, Tally& tally) {
    const std::string text = decimalText(random);
    const int precision = static_cast<int>(random.below(35));
    const int scale = static_cast<int>(random.below(static_cast<uint64_t>(precision) + 1));
    const FixedDecimalValue before{random.word(), random.word(), random.word()};
    FixedDecimalValue value = before;
    const std::string input = text + " as " + std::to_string(precision) + "," + std::to_string(scale);
    const bool taken = value.setDecimalValue(precision, scale, text.c_str());
    const bool touched = std::memcmp(&value, &before, sizeof value) != 0;
    tally.compare(input,
                  taken     ? show(coefficientOf(value))
                  : touched ? "refused but touched"
                            : "refused",
                  coefficientByHand(text, precision, scale));
}

// Also into a buffer that is too small, and nothing of the buffer behind the text.
void compareFormat(Random& random, Int128 coefficient, Tally& tally) {
    constexpr char kUntouched = '#';
    const int scale = static_cast<int>(random.below(random.oneIn(2) ? 18 : 64));
    const size_t outSize = random.oneIn(4) ? random.below(80) : 256;
    DataTypes::DataValue value;
    value.decimalValue = make(coefficient);
    value.isNull = false;
    std::string text(256, kUntouched);
    convertToString(DataTypes::createFixedDecimal(34, scale), false, false, value, text.data(), outSize);
    std::string expected = pointPlaced(coefficient, scale);
    if (outSize == 0) {
        expected.clear();
    } else {
        expected.resize(std::min(expected.size(), outSize - 1));
        expected += '\0';
    }
    expected.resize(text.size(), kUntouched);
    tally.compare(show(coefficient) + " at " + std::to_string(scale) + " into " + std::to_string(outSize),
                  text, expected);
}

void compareShiftBy(Int128 coefficient, int digits, Tally& tally) {
    Int128 power = 1;
    for (int i = 0; i < std::min(digits, 38); ++i) power *= 10;
    FixedDecimalValue down = make(coefficient);
    DataTypes::decimal_shift(down.high, down.low, -digits);
    tally.compare(show(coefficient) + " by " + std::to_string(-digits), show(coefficientOf(down)),
                  show(digits > 38 ? 0 : coefficient / power));
    FixedDecimalValue up = make(coefficient);
    Int128 product = 0;
    const bool fits =
        !__builtin_mul_overflow(coefficient, power, &product) && (digits <= 38 || coefficient == 0);
    const bool shifted = DataTypes::decimal_shift(up.high, up.low, digits);
    tally.compare(show(coefficient) + " by " + std::to_string(digits),
                  shifted ? show(coefficientOf(up)) : "refused", fits ? show(product) : "refused");
}

// Quotients next to a whole number are where a reciprocal goes wrong.
void compareShift(Random& random, Int128 number, Tally& tally) {
    const int digits = static_cast<int>(random.below(39));
    Int128 power = 1;
    for (int i = 0; i < digits; ++i) power *= 10;
    const Int128 edge = number / power * power;
    for (const Int128 coefficient : {number, edge, edge - 1, edge + 1})
        compareShiftBy(coefficient, digits, tally);
}

// The bounds of 128 bits and of 34 digits, by everything to beyond all digits.
void compareShiftsAtBounds(Tally& tally) {
    const Int128 most = ~(Int128{1} << 127);
    Int128 digits34 = 1;
    for (int i = 0; i < 34; ++i) digits34 *= 10;
    for (const Int128 bound :
         {Int128{0}, Int128{1}, Int128{10}, Int128{1} << 63, Int128{1} << 64, digits34, most / 10, most}) {
        for (const Int128 number : {bound - 1, bound, -bound, -bound - 1}) {
            for (int digits = 0; digits <= 41; ++digits) compareShiftBy(number, digits, tally);
            for (const int digits : {1000, 2147483647}) compareShiftBy(number, digits, tally);
        }
    }
}

void compareDouble(int scale, Int128 coefficient, Tally& tally) {
    const FixedDecimalValue value = make(coefficient);
    double number = 0;
    DataTypes::decimal_getDouble(value.high, value.low, scale, number);
    const std::string text = show(coefficient) + "e-" + std::to_string(scale);
    char ours[64], theirs[64];
    std::snprintf(ours, sizeof ours, "%a", number);
    std::snprintf(theirs, sizeof theirs, "%a", std::strtod(text.c_str(), nullptr));
    tally.compare(text, ours, theirs);
}

// a * m divided by b in digits of 16 bits: quotient * b + remainder must be a * m again, the remainder below
// b.
void compareLongDivision(Random& random, UInt128 a, UInt128 b, Tally& tally) {
    constexpr int kDigits = 9;
    uint16_t number[kDigits] = {}, divisor[8], quotient[kDigits] = {}, product[2 * kDigits] = {};
    for (int i = 0; i < 8; ++i) number[i] = static_cast<uint16_t>(a >> 16 * i);
    for (int i = 0; i < 8; ++i) divisor[i] = static_cast<uint16_t>(b >> 16 * i);
    number[8] = DataTypes::mul1(number, 8, static_cast<uint16_t>(random.number()));
    const std::string input(reinterpret_cast<const char*>(number), sizeof number);
    uint64_t words[4] = {};
    DataTypes::longdivmod128(static_cast<uint64_t>(a >> 64), static_cast<uint64_t>(a),
                             static_cast<uint64_t>(b >> 64), static_cast<uint64_t>(b), words[0], words[1],
                             words[2], words[3]);
    const UInt128 whole = UInt128{words[0]} << 64 | words[1], rest = UInt128{words[2]} << 64 | words[3];
    tally.compare("128 bits",
                  rest < b ? show(static_cast<Int128>(whole * b + rest)) : "a remainder too large",
                  show(static_cast<Int128>(a)));
    DataTypes::longdivmod(number, kDigits, divisor, 8, quotient);
    for (int i = 0; i < kDigits; ++i) {
        uint32_t carry = 0;
        for (int j = 0; j < 8; ++j) {
            carry += product[i + j] + static_cast<uint32_t>(quotient[i]) * divisor[j];
            product[i + j] = static_cast<uint16_t>(carry);
            carry >>= 16;
        }
        product[i + 8] = static_cast<uint16_t>(carry);
    }
    uint32_t carry = 0;
    for (int i = 0; i < kDigits; ++i) {
        carry += static_cast<uint32_t>(product[i]) + number[i];
        product[i] = static_cast<uint16_t>(carry);
        carry >>= 16;
    }
    const bool below =
        number[8] == 0 && std::lexicographical_compare(std::rbegin(number) + 1, std::rend(number),
                                                       std::rbegin(divisor), std::rend(divisor));
    tally.compare(
        show(static_cast<Int128>(a)) + " / " + show(static_cast<Int128>(b)),
        below ? std::string(reinterpret_cast<const char*>(product), sizeof number) : "a remainder too large",
        input);
}

}  // namespace

bool compareDecimals(Random& random, long count) {
    Tally texts("decimals with digit strings"), formats("decimals to text with digit strings"),
        shifts("rescaling with 128-bit division"), doubles("decimals to doubles with strtod"),
        divisions("long division with its inverse");
    compareShiftsAtBounds(shifts);
    for (long i = 0; i < count; ++i) {
        compareText(random, texts);
        const UInt128 magnitude = (UInt128{random.word()} << 64 | random.word()) >> (1 + random.below(127));
        const Int128 coefficient =
            random.oneIn(2) ? static_cast<Int128>(magnitude) : -static_cast<Int128>(magnitude);
        compareShift(random, coefficient, shifts);
        compareDouble(static_cast<int>(random.below(64)), coefficient, doubles);
        // Half way between two doubles, and next to it.
        const Int128 tie = ((static_cast<Int128>(random.word() >> 11) | Int128{1} << 53) * 2 + 1) * 1000;
        for (const Int128 near : {tie - 1, tie, tie + 1}) compareDouble(3, near, doubles);
        compareLongDivision(random, magnitude,
                            (UInt128{random.word()} << 64 | random.word() | 1) >> random.below(127) | 1,
                            divisions);
        compareFormat(random, coefficient, formats);
        // Where the count of digits changes.
        Int128 power = 1;
        for (uint64_t digits = random.below(38); digits > 0; --digits) power *= 10;
        const Int128 near = power + static_cast<Int128>(random.below(3)) - 1;
        compareFormat(random, random.oneIn(2) ? near : -near, formats);
    }
    bool same = true;
    for (const Tally* tally : {&texts, &formats, &shifts, &doubles, &divisions})
        same = tally->finish() && same;
    return same;
}

}  // namespace comparison
