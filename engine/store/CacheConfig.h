#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace velmorak {

/// Where results are cached on disk.
struct CacheConfig {
    std::filesystem::path folder;  ///< Empty: nowhere, results are cached in memory only.
    std::uint64_t limitBytes = 0;  ///< Of all entries together.
    std::string warning{};         ///< About a setting that cannot be used; empty if there is none.
};

/// The folder velmorak in XDG_CACHE_HOME, or else in ~/.cache, limited to VELMORAK_CACHE_LIMIT MiB, or else 2048; the
/// limit 0 turns the disk cache off.
CacheConfig cacheConfigFromEnvironment();

}  // namespace velmorak
