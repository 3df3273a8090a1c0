#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace velmorak {

/// Which kinds run in helper processes.
struct IsolationConfig {
    enum class Which { None, Foreign, All };

    Which which = Which::None;
    std::size_t memoryBytes = 0;        ///< That one helper process may use.
    std::filesystem::path installed{};  ///< Folder of the collections that are not foreign.
    std::filesystem::path library{};    ///< Shared object of the analysis library, which a helper process loads.
    std::filesystem::path program{};    ///< Of a helper process.
    std::string warning{};              ///< About settings that cannot be used; empty if there are none.

    /// @param object shared object of a collection.
    bool isolates(const std::filesystem::path& object) const;
};

/// VELMORAK_ISOLATE: 0 for no kind, 1 for all; otherwise those of collections outside the installation.
/// VELMORAK_ISOLATE_MEMORY: a size as that of VELMORAK_MEMORY_LIMIT; otherwise half of the machine's memory.
/// @param library shared object of the analysis library; its folder holds the collections and the program.
IsolationConfig isolationConfigFromEnvironment(const std::filesystem::path& library);

}  // namespace velmorak
