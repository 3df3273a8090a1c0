#pragma once

#include "executor/ThreadConfig.h"
#include "store/CacheConfig.h"

namespace velmorak {

/// Settings of a runner that do not belong to the pipeline.
struct RunConfig {
    CacheConfig cache;
    ThreadConfig threads{processorCount()};
};

/// Reads the environment variables of cache and threads.
RunConfig runConfigFromEnvironment();

}  // namespace velmorak
