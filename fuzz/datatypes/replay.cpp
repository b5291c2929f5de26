// Hands the files in the named folders to a fuzz target, so that seeds and found inputs run as ordinary
// tests.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int count, char** arguments) {
    int files = 0;
    for (int i = 1; i < count; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(arguments[i])) {
            std::ifstream in(entry.path(), std::ios::binary);
            const std::vector<char> bytes{std::istreambuf_iterator<char>(in), {}};
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
            ++files;
        }
    }
    std::printf("%d inputs\n", files);
    return files != 0 ? 0 : 1;
}
