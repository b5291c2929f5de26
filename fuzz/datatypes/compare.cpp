// compare_datatypes [TEXTS [SEED]]: compares the library with the C library over so many random texts of each
// kind.
#include <cstdlib>

#include "fuzz/datatypes/Comparison.h"

int main(int count, char** arguments) {
    const long texts = count > 1 ? std::atol(arguments[1]) : 2000000;
    const auto seed = count > 2 ? std::strtoull(arguments[2], nullptr, 10) : 20240229;
    if (texts <= 0) {
        std::fprintf(stderr, "usage: compare_datatypes [TEXTS [SEED]]\n");
        return 2;
    }
    std::printf("seed %llu\n", seed);
    comparison::Random random(seed);
    bool same = comparison::compareNumbers(random, texts);
    same = comparison::compareDates(random, texts) && same;
    same = comparison::compareFormatting(random, texts) && same;
    same = comparison::compareDecimals(random, texts) && same;
    return same ? 0 : 1;
}
