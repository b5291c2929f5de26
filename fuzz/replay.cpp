// Runs a fuzz target over files, so that what was once found stays a test of any compiler's build.
//
// replay FILE...
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int count, char** arguments) {
    if (count < 2) {
        std::fprintf(stderr, "no files to replay\n");
        return 2;
    }
    for (int i = 1; i < count; ++i) {
        std::ifstream file(arguments[i], std::ios::binary);
        if (!file) {
            std::fprintf(stderr, "cannot read %s\n", arguments[i]);
            return 1;
        }
        const std::string input{std::istreambuf_iterator<char>(file), {}};
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(input.data()), input.size());
    }
    return 0;
}
