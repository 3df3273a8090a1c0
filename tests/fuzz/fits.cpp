#include "InputFile.h"
#include "QuietContext.h"
#include "ReadTable.h"
#include "Target.h"

#include "fits/FitsFile.h"

// A FITS file: its list, each of its tables and images.

namespace velmorak::fuzz {
namespace {

template <typename Work>
void refusing(const Work& work) {
    try {
        work();
    } catch (const Failure&) {
    } catch (const Stopped&) {
    }
}

void read(const std::filesystem::path& file, const std::string& object) {
    // A few bytes can announce billions of rows without any bytes.
    constexpr long maxPolls = 100;
    QuietContext context(maxPolls);
    readTable(*openFitsTable(file, object, {}, context));
}

}  // namespace
}  // namespace velmorak::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velmorak::fuzz;
    const InputFile file(textOf(data, size));
    refusing([&] {
        for (const velmorak::FileObject& object : velmorak::listFits(file.path())) {
            refusing([&] { read(file.path(), object.path); });
        }
    });
    refusing([&] { read(file.path(), ""); });
    return 0;
}
