// Runs a fuzz target over the files of a folder, where no fuzzer is to be had.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    LLVMFuzzerInitialize(&argc, &argv);
    const std::filesystem::directory_iterator folder(argv[1]);
    std::vector<std::filesystem::path> files(begin(folder), end(folder));
    std::sort(files.begin(), files.end());
    for (const auto& path : files) {
        std::printf("%s\n", path.filename().c_str());
        std::fflush(stdout);  // the last name shown is the one that crashed
        std::ifstream file(path, std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    }
    std::printf("%zu inputs\n", files.size());
    return files.empty() ? 1 : 0;
}
