// Whole numbers, floats, money and seconds from text, against strtol, strtoll, strtod and sscanf.
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "datatypes/DataTypes.h"
#include "fuzz/datatypes/Comparison.h"

namespace comparison {
namespace {

using namespace std::string_literals;

bool startsNumber(const char* text) {
    return *text == '+' || *text == '-' || isdigit(static_cast<unsigned char>(*text));
}

std::string integerByStrtol(const char* text, long low, long high, const char* range) {
    if (!startsNumber(text)) return "integer constant does not begin with a legal character";
    char* end = nullptr;
    errno = 0;
    const long value = strtol(text, &end, 10);
    if (*end != '\0') return "integer constant does not end with a legal character";
    if (errno == ERANGE || value < low || value > high) return range;
    return std::to_string(value);
}

std::string longByStrtoll(const char* text) {
    if (!startsNumber(text)) return "long constant does not begin with a legal character";
    char* end = nullptr;
    errno = 0;
    const long long value = strtoll(text, &end, 10);
    if (*end != '\0') return "long constant does not end with a legal character";
    return errno == ERANGE ? "long constant out of range"s : std::to_string(value);
}

std::string intervalByStrtoll(const char* text) {
    const char* first = *text == '+' || *text == '-' ? text + 1 : text;
    if (!isdigit(static_cast<unsigned char>(*first)))
        return "interval constant does not begin with a legal character";
    char* end = nullptr;
    errno = 0;
    const long long value = strtoll(text, &end, 10);
    if (*end != '\0') return "interval constant does not end with a legal character";
    return errno == ERANGE ? "integer constant out of range"s : std::to_string(value);
}

std::string bitsOf(double value) {
    uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return std::to_string(bits);
}

std::string floatByStrtod(const char* text) {
    if (!startsNumber(text) && *text != '.') return "float constant does not begin with a legal character";
    char* end = nullptr;
    errno = 0;
    const double value = strtod(text, &end);
    if (*end != '\0') return "float constant does not end with a legal character";
    if (errno == ERANGE && (value == 0 || std::fabs(value) > 1.7976931348623157e308))
        return "float constant out of range";
    return bitsOf(value);
}

std::string moneyByStrtoll(const char* text, int places) {
    long long factor = 1;
    for (int i = 0; i < places; ++i) factor *= 10;
    const char* first = text;
    if (*text == '+' || *text == '-')
        ++first;
    else
        while (isspace(static_cast<unsigned char>(*first))) ++first;
    long long whole = 0;
    char* end = const_cast<char*>(first);
    if (*first != '.') {
        if (!isdigit(static_cast<unsigned char>(*first)))
            return "money constant does not begin with a legal character";
        errno = 0;
        whole = strtoll(text, &end, 10);
        if (*end != '.' && *end != '\0') return "money constant does not end with a legal character";
        if (errno == ERANGE) return "money constant out of range";
    }
    long long fraction = 0;
    if (*end == '.' && end[1] != '\0' && places != 0) {
        std::string kept = std::string(end + 1).substr(0, static_cast<size_t>(places));
        kept.resize(static_cast<size_t>(places), '0');
        if (!isdigit(static_cast<unsigned char>(kept[0])))
            return "money constant fractional part does not begin with a digit";
        char* keptEnd = nullptr;
        fraction = strtoll(kept.c_str(), &keptEnd, 10);
        if (*keptEnd != '\0') return "money constant does not end with a legal character";
    }
    if (factor >= 2) {
        const long long most = std::numeric_limits<long long>::max() / factor;
        const long long rest = std::numeric_limits<long long>::max() % factor;
        const long long restBelow = -(std::numeric_limits<long long>::min() % factor);
        if (whole > most || whole < -most) return "money constant out of range";
        if ((whole == most && fraction > rest) || (whole == -most && fraction > restBelow))
            return "money constant out of range";
    }
    return std::to_string(*text == '-' ? whole * factor - fraction : whole * factor + fraction);
}

std::string secondsBySscanf(const char* text) {
    long value = 0;
    return sscanf(text, "%ld", &value) == 1 ? std::to_string(value)
                                            : "date constant does not match standard format";
}

std::string ours(unsigned int type, const char* text) {
    DataTypes::DataValue value;
    const char* error = nullptr;
    if (!DataTypes::convertFromString(type, text, value, error, "%s", nullptr, nullptr, nullptr))
        return error;
    switch (type) {
        case DataTypes::kInt16:
            return std::to_string(value.int16Value);
        case DataTypes::kInteger:
            return std::to_string(value.integerValue);
        case DataTypes::kFloat:
            return bitsOf(value.floatValue);
        default:
            return std::to_string(value.longValue);
    }
}

// Near the bounds of the integers as often as anywhere else.
std::string wholeText(Random& random) {
    std::string text = random.oneIn(3) ? std::string(1, random.of("+- 0")) : "";
    switch (random.below(4)) {
        case 0:
            text += random.digits(25);
            break;
        case 1:
            text += std::to_string((uint64_t{1} << random.of("\x0f\x1f\x3f")) + random.below(21) - 10);
            break;
        default:
            text += std::to_string(random.number());
            break;
    }
    return random.damaged(text, "0123456789+-. \txe", 8);
}

std::string floatText(Random& random) {
    std::string text = random.oneIn(3) ? std::string(1, random.of("+-")) : "";
    switch (random.below(8)) {
        case 0:
            text += "0x" + random.digits(20) + random.of("abcdefp.") + random.digits(20) + "p-" +
                    random.digits(4);
            break;
        case 1:
            text += std::string_view("infinity").substr(0, random.below(9));
            break;
        case 2:
            text += std::string_view("NaN(12)").substr(0, random.below(8));
            break;
        default:
            text += random.digits(random.oneIn(4) ? 40 : 9) + "." + random.digits(random.oneIn(4) ? 40 : 9);
            if (random.oneIn(2))
                text += std::string(1, random.of("eE")) + random.of("+-0") + random.digits(3);
    }
    return random.damaged(text, "0123456789+-.eExXpPinfa ,", 8);
}

std::string moneyText(Random& random) {
    std::string text = random.oneIn(3) ? std::string(1, random.of("+- \t")) : "";
    text += random.oneIn(3) ? random.digits(19)
                            : std::to_string(9223372036854775807u / (random.below(1000000) + 1));
    text += "." + (random.oneIn(2) ? random.digits(18) : "8" + random.digits(2));
    return random.damaged(text, "0123456789+-. x", 6);
}

}  // namespace

bool compareNumbers(Random& random, long count) {
    Tally integers("integers with strtol"), longs("longs with strtoll"), intervals("intervals with strtoll"),
        floats("floats with strtod"), money("money with strtoll"), seconds("seconds with sscanf");
    for (long i = 0; i < count; ++i) {
        const std::string whole = wholeText(random);
        const char* const text = whole.c_str();
        integers.compare(whole, ours(DataTypes::kInt16, text),
                         integerByStrtol(text, -32768, 32767, "16-bit integer constant out of range"));
        integers.compare(whole, ours(DataTypes::kInteger, text),
                         integerByStrtol(text, -2147483648L, 2147483647L, "integer constant out of range"));
        longs.compare(whole, ours(DataTypes::kLong, text), longByStrtoll(text));
        intervals.compare(whole, ours(DataTypes::kInterval, text), intervalByStrtoll(text));
        seconds.compare(whole, ours(DataTypes::kDate, text), secondsBySscanf(text));
        const std::string real = floatText(random);
        floats.compare(real, ours(DataTypes::kFloat, real.c_str()), floatByStrtod(real.c_str()));
        const std::string amount = moneyText(random);
        const int places = static_cast<int>(random.below(15)) + 1;
        money.compare(amount,
                      ours(DataTypes::kMoney1 - 1 + static_cast<unsigned int>(places), amount.c_str()),
                      moneyByStrtoll(amount.c_str(), places));
    }
    bool same = true;
    for (const Tally* tally : {&integers, &longs, &intervals, &floats, &money, &seconds})
        same = tally->finish() && same;
    return same;
}

}  // namespace comparison
