// Runs the fuzz target over files and over random messages of a fixed seed, so that both are tests of any
// compiler's build.
//
// replay COUNT FILE...: COUNT random messages, then the files.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "fuzz/fix/Messages.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

void run(const std::string& message) {
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(message.data()), message.size());
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 3) return 2;
    Messages messages;
    for (long left = std::atol(arguments[1]); left > 0; --left) run(messages.next());
    for (int i = 2; i < count; ++i) {
        std::ifstream file(arguments[i], std::ios::binary);
        if (!file) {
            std::fprintf(stderr, "cannot read %s\n", arguments[i]);
            return 1;
        }
        run({std::istreambuf_iterator<char>(file), {}});
    }
    return 0;
}
