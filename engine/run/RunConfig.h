#pragma once

#include "executor/ThreadConfig.h"
#include "run/KindConfig.h"
#include "run/MemoryConfig.h"
#include "store/CacheConfig.h"

namespace velmorak {

/// Settings of the program that do not belong to the pipeline.
struct RunConfig {
    CacheConfig cache;
    ThreadConfig threads{processorCount()};
    MemoryConfig memory{halfOfMemory()};
    KindConfig kinds{};
};

/// Reads the environment variables of cache, threads, memory and kinds.
RunConfig runConfigFromEnvironment();

}  // namespace velmorak
