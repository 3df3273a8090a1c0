#pragma once

#include <cstddef>
#include <string>

namespace velmorak {

inline constexpr int maxRunThreads = 1024;

/// How many threads a run has.
struct ThreadConfig {
    std::size_t threads = 1;
    std::string warning{};  ///< About a setting that cannot be used; empty if there is none.
};

/// VELMORAK_THREADS, or else one thread for each processor that the program may use.
ThreadConfig threadConfigFromEnvironment();

/// @return the number of processors that the calling thread may use, at least 1.
std::size_t processorCount();

}  // namespace velmorak
