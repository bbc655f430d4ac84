// Runs a fuzz target's entry function over every file of its corpus folder, so that an input
// that once crashed the reader stays fixed. Built without libFuzzer, in the normal test build
// (with the sanitizers when they are on).
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s CORPUS_DIR...\n", argv[0]);
        return 2;
    }
    int files = 0;
    for (int a = 1; a < argc; ++a) {
        std::error_code ec;
        if (!fs::is_directory(argv[a], ec)) {
            std::fprintf(stderr, "%s: not a folder\n", argv[a]);
            return 2;
        }
        std::vector<fs::path> inputs;
        for (const auto& entry : fs::directory_iterator(argv[a]))
            if (entry.is_regular_file()) inputs.push_back(entry.path());
        std::sort(inputs.begin(), inputs.end());
        for (const auto& path : inputs) {
            std::ifstream in(path, std::ios::binary);
            std::vector<std::uint8_t> bytes((std::istreambuf_iterator<char>(in)), {});
            std::fprintf(stderr, "%s (%zu bytes)\n", path.filename().c_str(), bytes.size());
            LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
            ++files;
        }
    }
    std::fprintf(stderr, "%d inputs replayed\n", files);
    return files > 0 ? 0 : 1;
}
