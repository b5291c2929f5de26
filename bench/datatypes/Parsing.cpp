// Field texts to values, beside functions that do the same checks with the C library.
#include <fast_float/fast_float.h>
#include <time.h>

#include <cctype>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>

#include "bench/datatypes/Inputs.h"
#include "datatypes/DataTypes.h"

namespace {

using inputs::Random;
using Texts = std::vector<std::string>;

Texts integers() {
    return inputs::values([](Random& random) { return inputs::digits(random, 9); });
}
Texts longs() {
    return inputs::values([](Random& random) { return inputs::digits(random, 18); });
}
Texts prices() {
    return inputs::values(
        [](Random& random) { return inputs::digits(random, 5) + "." + inputs::digits(random, 4); });
}
Texts longFloats() {
    return inputs::values([](Random& random) {
        return std::to_string(random.below(9) + 1) + "." +
               std::to_string(random.word() % 9000000000000000 + 1000000000000000);
    });
}
Texts amounts() {
    return inputs::values([](Random& random) {
        return inputs::digits(random, 9) + "." + std::to_string(random.below(90) + 10);
    });
}
Texts booleans() {
    return inputs::values(
        [](Random& random) { return std::string(random.below(2) == 0 ? "true" : "false"); });
}
Texts moments(const char* format) {
    return inputs::values([format](Random& random) {
        const time_t second = static_cast<time_t>(random.below(4102444800));
        tm time{};
        gmtime_r(&second, &time);
        char text[64];
        strftime(text, sizeof text, format, &time);
        return std::string(text);
    });
}
Texts timestamps() {
    Texts texts = moments("%Y-%m-%dT%H:%M:%S");
    for (std::string& text : texts) text += ".123";
    return texts;
}

void convert(benchmark::State& state, unsigned int type, const Texts& texts) {
    DataTypes::DataValue value;
    const char* error = nullptr;
    inputs::run(state, texts, [&](const std::string& text) {
        const bool done = DataTypes::convertFromString(type, text.c_str(), value, error, nullptr, nullptr,
                                                       nullptr, nullptr);
        benchmark::DoNotOptimize(value);
        return done;
    });
}

void convertBy(benchmark::State& state, const Texts& texts,
               bool (*byPeer)(const char*, DataTypes::DataValue&, const char*&)) {
    DataTypes::DataValue value;
    const char* error = nullptr;
    inputs::run(state, texts, [&](const std::string& text) {
        const bool done = byPeer(text.c_str(), value, error);
        benchmark::DoNotOptimize(value);
        return done;
    });
}

bool fail(const char*& error, const char* text) {
    error = text;
    return false;
}

[[gnu::noinline]] bool integerByStrtol(const char* text, DataTypes::DataValue& value, const char*& error) {
    if (*text != '+' && *text != '-' && !isdigit(static_cast<unsigned char>(*text)))
        return fail(error, "begin");
    char* end = nullptr;
    errno = 0;
    const long wide = strtol(text, &end, 10);
    if (*end != '\0') return fail(error, "end");
    if (errno == ERANGE || wide != static_cast<int>(wide)) return fail(error, "range");
    value.integerValue = static_cast<int>(wide);
    value.isNull = false;
    return true;
}

[[gnu::noinline]] bool longByStrtoll(const char* text, DataTypes::DataValue& value, const char*& error) {
    if (*text != '+' && *text != '-' && !isdigit(static_cast<unsigned char>(*text)))
        return fail(error, "begin");
    char* end = nullptr;
    errno = 0;
    const long long wide = strtoll(text, &end, 10);
    if (*end != '\0') return fail(error, "end");
    if (errno == ERANGE) return fail(error, "range");
    value.longValue = wide;
    value.isNull = false;
    return true;
}

[[gnu::noinline]] bool floatByStrtod(const char* text, DataTypes::DataValue& value, const char*& error) {
    if (*text != '+' && *text != '-' && *text != '.' && !isdigit(static_cast<unsigned char>(*text)))
        return fail(error, "begin");
    char* end = nullptr;
    errno = 0;
    const double number = strtod(text, &end);
    if (*end != '\0') return fail(error, "end");
    if (errno == ERANGE && (number == 0 || std::isinf(number))) return fail(error, "range");
    value.floatValue = number;
    value.isNull = false;
    return true;
}

[[gnu::noinline]] bool floatByFromChars(const char* text, DataTypes::DataValue& value, const char*&) {
    const char* end = text + std::strlen(text);
    const auto result = std::from_chars(text, end, value.floatValue);
    return result.ec == std::errc() && result.ptr == end;
}

[[gnu::noinline]] bool floatByFastFloat(const char* text, DataTypes::DataValue& value, const char*&) {
    const char* end = text + std::strlen(text);
    const auto result = fast_float::from_chars(text, end, value.floatValue);
    return result.ec == std::errc() && result.ptr == end;
}

[[gnu::noinline]] bool moneyByStrtoll(const char* text, DataTypes::DataValue& value, const char*& error) {
    char* end = nullptr;
    errno = 0;
    const long long whole = strtoll(text, &end, 10);
    if (errno == ERANGE || *end != '.') return fail(error, "end");
    value.longValue = whole * 100 + strtoll(end + 1, &end, 10);
    value.isNull = false;
    return true;
}

[[gnu::noinline]] bool dateByStrptime(const char* text, DataTypes::DataValue& value, const char*& error) {
    tm time{};
    time.tm_year = 70;
    time.tm_mday = 1;
    if (::strptime(text, "%Y-%m-%dT%H:%M:%S", &time) == nullptr) return fail(error, "format");
    value.longValue = timegm(&time);
    value.isNull = false;
    return true;
}

void strptimeAndTm2sec(benchmark::State& state) {
    inputs::run(state, moments("%Y-%m-%dT%H:%M:%S"), [](const std::string& text) {
        tm time;
        return DataTypes::strptime(text.c_str(), "%Y-%m-%dT%H:%M:%S", &time) != nullptr &&
               DataTypes::tm2sec(&time) >= 0;
    });
}

void strptimeAndTimegm(benchmark::State& state) {
    inputs::run(state, moments("%Y-%m-%dT%H:%M:%S"), [](const std::string& text) {
        tm time{};
        time.tm_year = 70;
        time.tm_mday = 1;
        return ::strptime(text.c_str(), "%Y-%m-%dT%H:%M:%S", &time) != nullptr && timegm(&time) >= 0;
    });
}

BENCHMARK_CAPTURE(convert, integer, DataTypes::kInteger, integers());
BENCHMARK_CAPTURE(convertBy, integer / strtol, integers(), integerByStrtol);
BENCHMARK_CAPTURE(convert, long, DataTypes::kLong, longs());
BENCHMARK_CAPTURE(convertBy, long / strtoll, longs(), longByStrtoll);
BENCHMARK_CAPTURE(convert, float, DataTypes::kFloat, prices());
BENCHMARK_CAPTURE(convertBy, float / strtod, prices(), floatByStrtod);
BENCHMARK_CAPTURE(convertBy, float / from_chars, prices(), floatByFromChars);
BENCHMARK_CAPTURE(convertBy, float / fast_float, prices(), floatByFastFloat);
BENCHMARK_CAPTURE(convert, float17, DataTypes::kFloat, longFloats());
BENCHMARK_CAPTURE(convertBy, float17 / strtod, longFloats(), floatByStrtod);
BENCHMARK_CAPTURE(convertBy, float17 / from_chars, longFloats(), floatByFromChars);
BENCHMARK_CAPTURE(convertBy, float17 / fast_float, longFloats(), floatByFastFloat);
BENCHMARK_CAPTURE(convert, money, DataTypes::kMoney1 + 1, amounts());
BENCHMARK_CAPTURE(convertBy, money / strtoll, amounts(), moneyByStrtoll);
BENCHMARK_CAPTURE(convert, boolean, DataTypes::kBoolean, booleans());
BENCHMARK_CAPTURE(convert, date, DataTypes::kDate, moments("%Y-%m-%dT%H:%M:%S"));
BENCHMARK_CAPTURE(convertBy, date / strptime, moments("%Y-%m-%dT%H:%M:%S"), dateByStrptime);
BENCHMARK_CAPTURE(convert, timestamp, DataTypes::kTimestamp, timestamps());
BENCHMARK(strptimeAndTm2sec);
BENCHMARK(strptimeAndTimegm);

}  // namespace
