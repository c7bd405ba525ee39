// Stands in for clang's fuzzer in builds without it: tries every file of the named folders once.

#include "hardening/fuzz/fuzz_target.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <vector>

int main(int argc, char** argv) {
    LLVMFuzzerInitialize(&argc, &argv);
    int inputs = 0;
    for (int i = 1; i < argc; ++i) {
        std::set<std::filesystem::path> const files(std::filesystem::directory_iterator(argv[i]), {});
        for (std::filesystem::path const& file : files) {
            std::ifstream stream(file, std::ios::binary);
            std::vector<char> const bytes{std::istreambuf_iterator<char>(stream), {}};
            std::fprintf(stderr, "%s\n", file.string().c_str());
            LLVMFuzzerTestOneInput(reinterpret_cast<uint8_t const*>(bytes.data()), bytes.size());
            ++inputs;
        }
    }
    std::fprintf(stderr, "%d inputs\n", inputs);
    return inputs > 0 ? 0 : 1; // an empty corpus proves nothing
}
