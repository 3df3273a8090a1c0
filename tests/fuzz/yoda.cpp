#include "InputFile.h"
#include "QuietContext.h"
#include "Target.h"

#include "yoda/YodaFile.h"

#include <sstream>

// A file of histograms and points. What was read can be written, and is read again.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velmorak;
    const fuzz::InputFile file(fuzz::textOf(data, size));
    fuzz::QuietContext context;
    try {
        for (const YodaEntry& entry : readYoda(file.path(), context)) {
            fuzz::require(entry.problem.empty() != std::holds_alternative<std::monostate>(entry.value),
                          "an object has a value or a problem");
            std::ostringstream out;
            if (entry.problem.empty()) {
                writeYoda(out, "/object", entry.value, size % 2 == 0 ? YodaVersion::V2 : YodaVersion::V3);
                fuzz::require(!out.str().empty(), "an object is written");
            }
        }
    } catch (const Failure&) {
    } catch (const Stopped&) {
    }
    return 0;
}
