#pragma once

#include "executor/ThreadConfig.h"
#include "run/MemoryConfig.h"
#include "store/CacheConfig.h"

namespace velmorak {

/// Settings of a runner that do not belong to the pipeline.
struct RunConfig {
    CacheConfig cache;
    ThreadConfig threads{processorCount()};
    MemoryConfig memory{halfOfMemory()};
};

/// Reads the environment variables of cache, threads and memory.
RunConfig runConfigFromEnvironment();

}  // namespace velmorak
