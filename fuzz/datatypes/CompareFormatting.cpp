// Values as text, against snprintf and gmtime_r.
#include <time.h>

#include <cmath>
#include <cstring>

#include "datatypes/DataTypes.h"
#include "fuzz/datatypes/Comparison.h"

namespace comparison {
namespace {

template <typename... Arguments>
std::string print(const char* format, Arguments... arguments) {
    char text[2048];
    std::snprintf(text, sizeof text, format, arguments...);
    return text;
}

std::string printFloat(double value, int digits) {
    const double magnitude = std::fabs(value);
    if (magnitude < std::strtod(("1e-" + std::to_string(digits)).c_str(), nullptr)) value = 0;
    return magnitude > 1e80 ? print("%0.25g", value) : print("%0.*f", digits, value);
}

std::string printDouble(double value) {
    const double magnitude = std::fabs(value);
    if (magnitude <= 1e-15 || magnitude >= 1e16) return print("%0.*e", 15, value);
    if (magnitude < 1) return print("%0.*f", 15, value);
    return print("%0.*f", std::isnan(value) ? 0 : 14 - static_cast<int>(std::floor(std::log10(magnitude))),
                 value);
}

std::string printSecond(int64_t second) {
    tm time{};
    const time_t moment = second;
    const time_t epoch = 0;
    if (gmtime_r(&moment, &time) == nullptr) gmtime_r(&epoch, &time);
    return print("%04ld-%02d-%02d %02d:%02d:%02d", time.tm_year + 1900L, time.tm_mon + 1, time.tm_mday,
                 time.tm_hour, time.tm_min, time.tm_sec);
}

std::string printFraction(int64_t value, int64_t perSecond, const char* form) {
    int64_t second = value / perSecond;
    int64_t part = value % perSecond;
    if (part < 0) {
        --second;
        part += perSecond;
    }
    return printSecond(second) + "." + print(form, static_cast<int>(part));
}

std::string printMoney(int64_t value, int places) {
    int64_t factor = 1;
    for (int i = 0; i < places; ++i) factor *= 10;
    const auto whole = static_cast<long long>(value / factor);
    const auto part = static_cast<long long>(value % factor);
    return (value < 0 ? "-" : "") + print("%lld.%0*lld", std::abs(whole), places, std::abs(part));
}

std::string ours(unsigned int type, DataTypes::DataValue value) {
    char text[2048] = "";
    value.isNull = false;
    DataTypes::convertToString(type, false, false, value, text, sizeof text);
    return text;
}

// Bit patterns, decimal fractions, and numbers half way between two texts.
double floatOf(Random& random) {
    const uint64_t word = random.word();
    double value = 0;
    switch (random.below(4)) {
        case 0:
            std::memcpy(&value, &word, sizeof value);
            return value;
        case 1:
            return static_cast<double>(random.signedNumber()) / 1000000.0;
        case 2:
            return std::ldexp(static_cast<double>(random.signedNumber() | 1),
                              -static_cast<int>(random.below(70)));
        default:
            return static_cast<double>(random.signedNumber() >> 20) + 0.5;
    }
}

}  // namespace

bool compareFormatting(Random& random, long count) {
    Tally floats("floats to text with snprintf"), doubles("15 digits with snprintf"),
        dates("dates to text with gmtime_r"), fractions("timestamps to text with gmtime_r"),
        money("money to text with snprintf");
    DataTypes::DataValue value;
    for (long i = 0; i < count; ++i) {
        const int digits = random.oneIn(2) ? 6 : static_cast<int>(random.below(25));
        DataTypes::setDecimalSize(static_cast<size_t>(digits));
        const double real = floatOf(random);
        value.floatValue = real;
        floats.compare(print("%a", real), ours(DataTypes::kFloat, value), printFloat(real, digits));
        value.isNull = false;
        char text[64];
        DataTypes::convertDoubleToString(DataTypes::kFloat, false, value, text, sizeof text);
        doubles.compare(print("%a", real), text, printDouble(real));

        const int64_t number = random.signedNumber();
        const std::string input = std::to_string(number);
        value.longValue = number;
        dates.compare(input, ours(DataTypes::kDate, value), printSecond(number));
        dates.compare(input, ours(DataTypes::kTime, value),
                      printSecond(number).substr(printSecond(number).find(' ') + 1));
        fractions.compare(input, ours(DataTypes::kTimestamp, value), printFraction(number, 1000, "%03d"));
        fractions.compare(input, ours(DataTypes::kBigdatetime, value),
                          printFraction(number, 1000000, "%06d"));
        const int places = static_cast<int>(random.below(15)) + 1;
        money.compare(input, ours(DataTypes::kMoney1 - 1 + static_cast<unsigned int>(places), value),
                      printMoney(number, places));
    }
    DataTypes::setDecimalSize(6);
    bool same = true;
    for (const Tally* tally : {&floats, &doubles, &dates, &fractions, &money}) same = tally->finish() && same;
    return same;
}

}  // namespace comparison
