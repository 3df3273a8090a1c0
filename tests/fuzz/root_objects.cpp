#include "RootInput.h"

#include <root/RootObjects.h>

// The histograms, profiles, graphs, numbers and texts of a ROOT file.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velmorak;
    fuzz::forEachRootObject(data, size, [](const std::filesystem::path& file, const RootEntry& entry) {
        if (const ValueType type = rootObjectType(entry.className); type != ValueType::Any) {
            fuzz::QuietContext context;
            const Value value = readRootObject(file, entry.path, type, context);
            const auto* object = std::get_if<DataObjectPtr>(&value);
            fuzz::require(!object || (*object && (*object)->type() == type), "an object has the type of its class");
        }
    });
    return 0;
}
