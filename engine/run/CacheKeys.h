#pragma once

#include "run/RunState.h"
#include "store/Sha256.h"

#include <optional>
#include <vector>

namespace velmorak {

/// @return for each plug-in a sum over its name, kind with the build of its code, and values and all that feeds it;
/// nothing where it has no meaning
///         because of a cycle or an unknown kind. Two plug-ins with the same sum give the same results as long as the
///         files that they read hold the same.
std::vector<std::optional<Digest>> cacheKeys(const RunState& state);

}  // namespace velmorak
