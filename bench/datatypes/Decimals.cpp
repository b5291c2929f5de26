// Decimals of 5-12, 15-24 and 25-34 digits, beside Intel's decimal floating-point library; and type widening.
#include <bid_conf.h>
#include <bid_functions.h>

#include <cstring>

#include "bench/datatypes/Inputs.h"
#include "datatypes/DataTypes.h"

namespace {

using DataTypes::FixedDecimalValue;
using inputs::Random;
using Texts = std::vector<std::string>;

constexpr unsigned int kToEven = 0;
constexpr int kScale = 10;

// `fewest` to `most` digits, ten of them after the point when there are more than that, else half.
Texts decimals(size_t fewest, size_t most) {
    return inputs::values([=](Random& random) {
        const size_t count = fewest + random.below(most - fewest + 1);
        std::string text(1, static_cast<char>('1' + random.below(9)));
        while (text.size() < count) text += static_cast<char>('0' + random.below(10));
        return text.insert(count > kScale ? count - kScale : count / 2, ".");
    });
}

FixedDecimalValue decimalOf(const std::string& text) {
    FixedDecimalValue value{};
    value.setDecimalValue(34, kScale, text.c_str());
    return value;
}

BID_UINT128 bidOf(const std::string& text) {
    unsigned int flags = 0;
    std::string copy = text;
    return __bid128_from_string(copy.data(), kToEven, &flags);
}

// At the scale of the decimals; an invalid operation when that takes more than 34 digits.
BID_UINT128 toScale(BID_UINT128 number, unsigned int& flags) {
    static const BID_UINT128 unit = bidOf("1e-" + std::to_string(kScale));
    return __bid128_quantize(number, unit, kToEven, &flags);
}

void parse(benchmark::State& state, const Texts& texts) {
    FixedDecimalValue value{};
    inputs::run(state, texts, [&](const std::string& text) {
        const bool done = value.setDecimalValue(34, kScale, text.c_str());
        benchmark::DoNotOptimize(value);
        return done;
    });
}

void parseIntel(benchmark::State& state, const Texts& texts) {
    unsigned int flags = 0;
    inputs::run(state, texts, [&](const std::string& text) {
        BID_UINT128 value = __bid128_from_string(const_cast<char*>(text.c_str()), kToEven, &flags);
        benchmark::DoNotOptimize(value);
        return flags == 0;
    });
}

// With what a decimal of a precision and a scale takes besides.
void parseIntelToScale(benchmark::State& state, const Texts& texts) {
    unsigned int flags = 0;
    inputs::run(state, texts, [&](const std::string& text) {
        const BID_UINT128 number = __bid128_from_string(const_cast<char*>(text.c_str()), kToEven, &flags);
        BID_UINT128 value = toScale(number, flags);
        benchmark::DoNotOptimize(value);
        return (flags & BID_INVALID_EXCEPTION) == 0 && __bid128_isNaN(value) == 0;
    });
}

void convertField(benchmark::State& state, const Texts& texts) {
    DataTypes::DataValue value;
    const char* error = nullptr;
    const unsigned int type = DataTypes::createFixedDecimal(34, kScale);
    inputs::run(state, texts, [&](const std::string& text) {
        const bool done = DataTypes::convertFromString(type, text.c_str(), value, error, nullptr, nullptr,
                                                       nullptr, nullptr);
        benchmark::DoNotOptimize(value);
        return done;
    });
}

void format(benchmark::State& state, const Texts& texts) {
    std::vector<DataTypes::DataValue> values(texts.size());
    for (size_t i = 0; i < texts.size(); ++i) {
        values[i].decimalValue = decimalOf(texts[i]);
        values[i].isNull = false;
    }
    char text[64];
    inputs::run(state, values, [&](const DataTypes::DataValue& value) {
        DataTypes::convertToString(DataTypes::kDecimal, false, false,
                                   const_cast<DataTypes::DataValue&>(value), text, sizeof text);
        benchmark::DoNotOptimize(text);
        return text[2] != '\0';
    });
}

void formatIntel(benchmark::State& state, const Texts& texts) {
    std::vector<BID_UINT128> values;
    for (const std::string& text : texts) values.push_back(bidOf(text));
    unsigned int flags = 0;
    char text[64];
    inputs::run(state, values, [&](const BID_UINT128& number) {
        __bid128_to_string(text, number, &flags);
        benchmark::DoNotOptimize(text);
        return text[2] != '\0';
    });
}

// A sign and digits, up to "E", as the plain text that a decimal has.
void placePoint(const char* number, char* out) {
    if (*number++ == '-') *out++ = '-';
    const auto digits = static_cast<int>(std::strchr(number, 'E') - number);
    const int whole = digits - kScale;
    if (whole > 0) {
        std::memcpy(out, number, static_cast<size_t>(whole));
        out += whole;
    } else {
        *out++ = '0';
    }
    *out++ = '.';
    for (int zeros = -whole; zeros > 0; --zeros) *out++ = '0';
    const int fraction = whole > 0 ? kScale : digits;
    std::memcpy(out, number + digits - fraction, static_cast<size_t>(fraction));
    out[fraction] = '\0';
}

// The same numbers at the decimals' scale as the same texts.
void formatIntelPlain(benchmark::State& state, const Texts& texts) {
    std::vector<BID_UINT128> values;
    unsigned int flags = 0;
    for (const std::string& text : texts) values.push_back(toScale(bidOf(text), flags));
    char number[64], text[64];
    inputs::run(state, values, [&](const BID_UINT128& value) {
        __bid128_to_string(number, value, &flags);
        placePoint(number, text);
        benchmark::DoNotOptimize(text);
        return text[2] != '\0';
    });
}

// To two places: a division by 10^8 of most numbers.
void rescale(benchmark::State& state, const Texts& texts) {
    std::vector<FixedDecimalValue> values;
    for (const std::string& text : texts) values.push_back(decimalOf(text));
    inputs::run(state, values, [](const FixedDecimalValue& number) {
        uint64_t high = number.high, low = number.low;
        const bool done = DataTypes::decimal_shift(high, low, 2 - kScale);
        benchmark::DoNotOptimize(high);
        benchmark::DoNotOptimize(low);
        return done;
    });
}

void rescaleIntel(benchmark::State& state, const Texts& texts) {
    constexpr unsigned int kTowardZero = 3;
    std::vector<BID_UINT128> values;
    for (const std::string& text : texts) values.push_back(bidOf(text));
    const BID_UINT128 twoPlaces = bidOf("1.00");
    unsigned int flags = 0;
    inputs::run(state, values, [&](const BID_UINT128& number) {
        BID_UINT128 moved = __bid128_quantize(number, twoPlaces, kTowardZero, &flags);
        benchmark::DoNotOptimize(moved);
        return (flags & BID_INVALID_EXCEPTION) == 0;
    });
}

void maximizeAnyType(benchmark::State& state) {
    const auto pairs = inputs::values([](Random& random) {
        return std::make_pair(static_cast<unsigned int>(random.below(31)),
                              static_cast<unsigned int>(random.below(31)));
    });
    inputs::run(state, pairs, [](const std::pair<unsigned int, unsigned int>& pair) {
        unsigned int target = pair.first;
        DataTypes::maximizeAnyType(target, pair.second);
        benchmark::DoNotOptimize(target);
        return true;
    });
}

const Texts kShort = decimals(5, 12);
const Texts kMiddle = decimals(15, 24);
const Texts kLong = decimals(25, 34);

BENCHMARK_CAPTURE(parse, 12, kShort);
BENCHMARK_CAPTURE(parseIntel, 12, kShort);
BENCHMARK_CAPTURE(parseIntelToScale, 12, kShort);
BENCHMARK_CAPTURE(parse, 24, kMiddle);
BENCHMARK_CAPTURE(parseIntel, 24, kMiddle);
BENCHMARK_CAPTURE(parseIntelToScale, 24, kMiddle);
BENCHMARK_CAPTURE(parse, 34, kLong);
BENCHMARK_CAPTURE(parseIntel, 34, kLong);
BENCHMARK_CAPTURE(parseIntelToScale, 34, kLong);
BENCHMARK_CAPTURE(convertField, 34, kLong);
BENCHMARK_CAPTURE(format, 12, kShort);
BENCHMARK_CAPTURE(formatIntel, 12, kShort);
BENCHMARK_CAPTURE(formatIntelPlain, 12, kShort);
BENCHMARK_CAPTURE(format, 24, kMiddle);
BENCHMARK_CAPTURE(formatIntel, 24, kMiddle);
BENCHMARK_CAPTURE(formatIntelPlain, 24, kMiddle);
BENCHMARK_CAPTURE(format, 34, kLong);
BENCHMARK_CAPTURE(formatIntel, 34, kLong);
BENCHMARK_CAPTURE(formatIntelPlain, 34, kLong);
BENCHMARK_CAPTURE(rescale, 12, kShort);
BENCHMARK_CAPTURE(rescaleIntel, 12, kShort);
BENCHMARK_CAPTURE(rescale, 24, kMiddle);
BENCHMARK_CAPTURE(rescaleIntel, 24, kMiddle);
BENCHMARK_CAPTURE(rescale, 34, kLong);
BENCHMARK_CAPTURE(rescaleIntel, 34, kLong);
BENCHMARK(maximizeAnyType);

}  // namespace
