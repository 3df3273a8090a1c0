#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace velmorak {

/// How much memory the kinds of a run may use for rows that they keep.
struct MemoryConfig {
    std::size_t limitBytes = 0;
    std::string warning{};  ///< About a setting that cannot be used; empty if there is none.
};

/// VELMORAK_MEMORY_LIMIT, such as 64MB, 500 MiB or 4G, or else half of the machine's memory. K, M, G and T are powers
/// of 1024, with or without B or iB; a number without a unit counts bytes.
MemoryConfig memoryConfigFromEnvironment();

/// @return the bytes that a setting such as 4 GB names; nothing if it is no size of at least 16 MB.
std::optional<std::size_t> sizeIn(std::string_view setting);

/// @return half of the machine's memory in bytes, or of what a container may use if that is less.
std::size_t halfOfMemory();

}  // namespace velmorak
