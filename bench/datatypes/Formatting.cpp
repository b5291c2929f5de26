// Values to text, beside the snprintf (and gmtime_r) forms.
#include <time.h>

#include <charconv>
#include <cmath>
#include <cstdio>

#include "bench/datatypes/Inputs.h"
#include "datatypes/DataTypes.h"

namespace {

using inputs::Random;
using Numbers = std::vector<int64_t>;

Numbers integers() {
    return inputs::values(
        [](Random& random) { return static_cast<int64_t>(random.below(1u << (random.below(30) + 1))); });
}
Numbers longs() {
    return inputs::values(
        [](Random& random) { return static_cast<int64_t>(random.word() >> (1 + random.below(50))); });
}
Numbers amounts() {
    return inputs::values(
        [](Random& random) { return std::atol((inputs::digits(random, 9) + "25").c_str()); });
}
Numbers seconds() {
    return inputs::values([](Random& random) { return static_cast<int64_t>(random.below(4102444800)); });
}
Numbers millis() {
    return inputs::values([](Random& random) { return static_cast<int64_t>(random.below(4102444800000)); });
}
std::vector<double> prices() {
    return inputs::values([](Random& random) {
        return std::atof((inputs::digits(random, 5) + "." + inputs::digits(random, 4)).c_str());
    });
}

void write(benchmark::State& state, unsigned int type, const Numbers& numbers) {
    char text[64];
    DataTypes::DataValue value;
    value.isNull = false;
    inputs::run(state, numbers, [&](int64_t number) {
        value.longValue = number;
        DataTypes::convertToString(type, false, false, value, text, sizeof text);
        benchmark::DoNotOptimize(text);
        return text[0] != '\0';
    });
}

void writeBy(benchmark::State& state, const Numbers& numbers, int (*byPeer)(int64_t, char*, size_t)) {
    char text[64];
    inputs::run(state, numbers, [&](int64_t number) {
        const int written = byPeer(number, text, sizeof text);
        benchmark::DoNotOptimize(text);
        return written > 0;
    });
}

[[gnu::noinline]] int integerBySnprintf(int64_t number, char* out, size_t size) {
    return snprintf(out, size, "%d", static_cast<int>(number));
}
[[gnu::noinline]] int longBySnprintf(int64_t number, char* out, size_t size) {
    return snprintf(out, size, "%lld", static_cast<long long>(number));
}
[[gnu::noinline]] int moneyBySnprintf(int64_t number, char* out, size_t size) {
    return snprintf(out, size, "%lld.%0*lld", static_cast<long long>(number / 100), 2,
                    static_cast<long long>(number % 100));
}
[[gnu::noinline]] int dateBySnprintf(int64_t number, char* out, size_t size) {
    tm time{};
    gmtime_r(&number, &time);
    return snprintf(out, size, "%04d-%02d-%02d %02d:%02d:%02d", time.tm_year + 1900, time.tm_mon + 1,
                    time.tm_mday, time.tm_hour, time.tm_min, time.tm_sec);
}
[[gnu::noinline]] int timeBySnprintf(int64_t number, char* out, size_t size) {
    tm time{};
    gmtime_r(&number, &time);
    return snprintf(out, size, "%02d:%02d:%02d", time.tm_hour, time.tm_min, time.tm_sec);
}
[[gnu::noinline]] int timestampBySnprintf(int64_t number, char* out, size_t size) {
    const time_t second = number / 1000;
    tm time{};
    gmtime_r(&second, &time);
    char part[8];
    snprintf(part, sizeof part, "%03d", static_cast<int>(number % 1000));
    return snprintf(out, size, "%04d-%02d-%02d %02d:%02d:%02d.%s", time.tm_year + 1900, time.tm_mon + 1,
                    time.tm_mday, time.tm_hour, time.tm_min, time.tm_sec, part);
}

void writeFloat(benchmark::State& state) {
    char text[64];
    DataTypes::DataValue value;
    value.isNull = false;
    inputs::run(state, prices(), [&](double number) {
        value.floatValue = number;
        DataTypes::convertToString(DataTypes::kFloat, false, false, value, text, sizeof text);
        benchmark::DoNotOptimize(text);
        return text[0] != '\0';
    });
}

void writeFloatBySnprintf(benchmark::State& state) {
    char text[64];
    inputs::run(state, prices(), [&](double number) {
        const int written = snprintf(text, sizeof text, "%0.*f", 6, number);
        benchmark::DoNotOptimize(text);
        return written > 0;
    });
}

void writeFloatByToChars(benchmark::State& state) {
    char text[64];
    inputs::run(state, prices(), [&](double number) {
        const auto written = std::to_chars(text, text + sizeof text, number, std::chars_format::fixed, 6);
        benchmark::DoNotOptimize(text);
        return written.ec == std::errc();
    });
}

BENCHMARK_CAPTURE(write, integer, DataTypes::kInteger, integers());
BENCHMARK_CAPTURE(writeBy, integer / snprintf, integers(), integerBySnprintf);
BENCHMARK_CAPTURE(write, long, DataTypes::kLong, longs());
BENCHMARK_CAPTURE(writeBy, long / snprintf, longs(), longBySnprintf);
BENCHMARK(writeFloat);
BENCHMARK(writeFloatBySnprintf);
BENCHMARK(writeFloatByToChars);
BENCHMARK_CAPTURE(write, money, DataTypes::kMoney1 + 1, amounts());
BENCHMARK_CAPTURE(writeBy, money / snprintf, amounts(), moneyBySnprintf);
BENCHMARK_CAPTURE(write, date, DataTypes::kDate, seconds());
BENCHMARK_CAPTURE(writeBy, date / snprintf, seconds(), dateBySnprintf);
BENCHMARK_CAPTURE(write, time, DataTypes::kTime, seconds());
BENCHMARK_CAPTURE(writeBy, time / snprintf, seconds(), timeBySnprintf);
BENCHMARK_CAPTURE(write, timestamp, DataTypes::kTimestamp, millis());
BENCHMARK_CAPTURE(writeBy, timestamp / snprintf, millis(), timestampBySnprintf);
BENCHMARK_CAPTURE(write, boolean, DataTypes::kBoolean, Numbers(inputs::kValues, 1));

}  // namespace
