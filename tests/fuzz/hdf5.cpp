#include "TableFile.h"

#include "hdf5/Hdf5File.h"

// An HDF5 file: its list and each of its tables.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velmorak;
    const auto open = [](const auto& file, const std::string& object, RunContext& context) {
        return openHdf5Table(file, object, {}, context);
    };
    fuzz::readObjects(fuzz::textOf(data, size), listHdf5, open);
    return 0;
}
