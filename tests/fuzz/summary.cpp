#include "Target.h"

#include "summary.h"

#include <sstream>

// What a collection says of its kinds in plugin_summary.txt.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::istringstream text{std::string(velmorak::fuzz::textOf(data, size))};
    const Summary summary = readSummary(text);
    for (const auto& [name, description] : summary.kinds) {
        velmorak::fuzz::require(!name.empty(), "a kind has a name");
    }
    return 0;
}
