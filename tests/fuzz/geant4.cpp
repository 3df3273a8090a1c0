#include "InputFile.h"
#include "QuietContext.h"
#include "Target.h"

#include "csv/Geant4Histogram.h"

// A histogram or profile as Geant4 writes it.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velmorak;
    const fuzz::InputFile file(fuzz::textOf(data, size));
    fuzz::QuietContext context;
    try {
        fuzz::require(readGeant4Histogram(file.path(), context) != nullptr, "a file that is accepted holds an object");
    } catch (const Failure&) {
    } catch (const Stopped&) {
    }
    return 0;
}
