// Runs a fuzz target over files, so that its seeds and past findings are tests of any compiler's build.
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int count, char** files) {
    for (int i = 1; i < count; ++i) {
        std::ifstream file(files[i], std::ios::binary);
        if (!file) {
            std::fprintf(stderr, "cannot read %s\n", files[i]);
            return 1;
        }
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    }
    return count > 1 ? 0 : 1;
}
