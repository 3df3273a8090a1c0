#include "run/RunConfig.h"

namespace velmorak {

RunConfig runConfigFromEnvironment() {
    return {cacheConfigFromEnvironment(), threadConfigFromEnvironment(), memoryConfigFromEnvironment(),
            kindConfigFromEnvironment()};
}

}  // namespace velmorak
