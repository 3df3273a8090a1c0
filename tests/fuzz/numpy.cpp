#include "TableFile.h"

#include "numpy/NumpyFile.h"

// A .npy or .npz file: its list, each of its arrays, and all of them together.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velmorak;
    const auto open = [](const auto& file, const std::string& object, RunContext& context) {
        return openNumpyTable(file, object, {}, context);
    };
    fuzz::readObjects(fuzz::textOf(data, size), listNumpy, open);
    return 0;
}
