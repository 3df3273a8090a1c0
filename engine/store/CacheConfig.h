#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>

namespace velmorak {

/// Where results are cached on disk.
struct CacheConfig {
    std::filesystem::path folder;  ///< Empty: nowhere, results are cached in memory only.
    std::uint64_t limitBytes = 0;  ///< Of all entries together.
    /// What a pass computed from one file of many is kept if reading the file took at least so long.
    std::chrono::milliseconds minReadingTime{10};
    std::string warning{};  ///< About settings that cannot be used; empty if there are none.
};

/// The folder velmorak in XDG_CACHE_HOME, or else in ~/.cache, limited to VELMORAK_CACHE_LIMIT MiB, or else 2048; the
/// limit 0 turns the disk cache off. VELMORAK_CACHE_FILES_FROM is the least time of reading in ms.
CacheConfig cacheConfigFromEnvironment();

}  // namespace velmorak
