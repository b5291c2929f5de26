// What the data type benchmarks share: 1024 varied values of each kind from a fixed seed, and the loop over
// them.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace inputs {

constexpr size_t kValues = 1024;

class Random {
public:
    uint64_t word() { return words_(); }
    uint64_t below(uint64_t bound) { return words_() % bound; }

private:
    std::mt19937_64 words_{20240229};
};

template <typename Make>
auto values(Make make) {
    Random random;
    std::vector<decltype(make(random))> made;
    for (size_t i = 0; i < kValues; ++i) made.push_back(make(random));
    return made;
}

// Numbers of 1 to `most` digits, all lengths alike.
inline std::string digits(Random& random, uint64_t most) {
    std::string text(1, static_cast<char>('1' + random.below(9)));
    for (uint64_t count = random.below(most); count > 0; --count)
        text += static_cast<char>('0' + random.below(10));
    return text;
}

// Times `operation` over the values, one an iteration, after it has handled every one of them outside the
// time: it returns false when its result is not what it should be.
template <typename Value, typename Operation>
void run(benchmark::State& state, const std::vector<Value>& made, Operation operation) {
    for (const Value& value : made) {
        if (!operation(value)) return state.SkipWithError("a value was not handled");
    }
    size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(operation(made[next]));
        next = (next + 1) % kValues;
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
}

}  // namespace inputs
