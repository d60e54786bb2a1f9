// Runs a target over the files of folders, without a fuzzer: what was found once stays mended.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/fuzz.h"

namespace fs = std::filesystem;

static std::vector<fs::path> filesOf(const char* folder) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(folder)) files.push_back(entry.path());
    std::ranges::sort(files);
    return files;
}

// Of exactly its size, so that a sanitizer sees a read behind it.
static void replay(const fs::path& path) {
    std::printf("%s\n", path.c_str());
    std::fflush(stdout);
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
}

int main(int count, char** arguments) {
    size_t replayed = 0;
    for (int i = 1; i < count; i++) {
        for (const fs::path& file : filesOf(arguments[i])) {
            replay(file);
            replayed++;
        }
    }
    std::printf("%zu inputs\n", replayed);
    return replayed > 0 ? 0 : 1;
}
