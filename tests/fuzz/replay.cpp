#include "Target.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

// Shows files, and all files below folders, to a target: the corpus as a plain test, with any compiler.

namespace {

namespace fs = std::filesystem;

void show(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    // A copy of just this size, so that the address sanitizer sees a read beyond its end.
    const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
    std::printf("%s\n", file.c_str());
    std::fflush(stdout);  // The last name is that of the input that ends the program.
    LLVMFuzzerTestOneInput(input.data(), input.size());
}

std::size_t showAll(const fs::path& path) {
    if (!fs::is_directory(path)) {
        show(path);
        return 1;
    }
    std::size_t count = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(path)) {
        if (entry.is_regular_file()) {
            show(entry.path());
            ++count;
        }
    }
    return count;
}

}  // namespace

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (showAll(argv[i]) == 0) {
            std::fprintf(stderr, "there is no input in %s\n", argv[i]);
            return 1;
        }
    }
    return argc > 1 ? 0 : 1;
}
