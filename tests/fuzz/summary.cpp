#include "Target.h"

#include "summary.h"

#include <sstream>
#include <stdexcept>

// What a collection says of its kinds in plugin_summary.txt.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::istringstream text{std::string(velmorak::fuzz::textOf(data, size))};
    try {
        const Summary summary = readSummary(text);
        for (const auto& [name, description] : summary.kinds) {
            velmorak::fuzz::require(!name.empty(), "a kind has a name");
        }
    } catch (const std::out_of_range&) {
        // A heading without a name.
    }
    return 0;
}
