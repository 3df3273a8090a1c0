#include "run/RunConfig.h"

namespace velmorak {

RunConfig runConfigFromEnvironment() {
    return {cacheConfigFromEnvironment(), threadConfigFromEnvironment()};
}

}  // namespace velmorak
