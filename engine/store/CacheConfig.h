#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace velmorak {

/// Where results outlive the program.
struct CacheConfig {
    std::filesystem::path folder;  ///< Empty: nowhere.
    std::uint64_t limitBytes = 0;  ///< How much may lie there.
    std::string complaint{};       ///< About a setting that cannot be used; empty when there is none.
};

/// The folder velmorak in XDG_CACHE_HOME, or else in ~/.cache, with VELMORAK_CACHE_LIMIT MiB, or else 2048; 0 MiB is
/// nowhere.
CacheConfig cacheConfigFromEnvironment();

}  // namespace velmorak
