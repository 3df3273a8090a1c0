#pragma once

#include "run/RunState.h"
#include "store/Sha256.h"

#include <optional>
#include <vector>

namespace velmorak {

/// Cache key of each node: a hash of its name, kind, build of the kind's code, values and upstream keys; empty for
/// nodes in or below a cycle and for unknown kinds. Nodes with equal keys give equal results as long as the files that
/// they read have equal content.
std::vector<std::optional<Digest>> cacheKeys(const RunState& state);

}  // namespace velmorak
