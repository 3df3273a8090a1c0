#include "RootInput.h"

// The trees of a ROOT file: branches, leaves, baskets.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velmorak;
    fuzz::forEachRootObject(data, size, [](const std::filesystem::path& file, const RootEntry& entry) {
        if (entry.isTable && entry.className != "ROOT::RNTuple") {
            fuzz::readRootTable(file, entry.path);
        }
    });
    return 0;
}
