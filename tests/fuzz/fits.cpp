#include "TableFile.h"

#include "fits/FitsFile.h"

// A FITS file: its list, each of its tables and images.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velmorak;
    const auto open = [](const auto& file, const std::string& object, RunContext& context) {
        return openFitsTable(file, object, {}, context);
    };
    fuzz::readObjects(fuzz::textOf(data, size), listFits, open);
    return 0;
}
