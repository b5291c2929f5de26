// random COUNT: the fuzz target over so many random messages of a fixed seed.
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "fuzz/fix/Messages.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int count, char** arguments) {
    const long messages = count == 2 ? std::atol(arguments[1]) : 0;
    if (messages <= 0) {
        std::fprintf(stderr, "random COUNT: so many messages, at least one\n");
        return 2;
    }
    Messages random;
    for (long i = 0; i < messages; ++i) {
        const std::string message = random.next();
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(message.data()), message.size());
    }
    return 0;
}
