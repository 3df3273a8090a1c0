#pragma once

#include "run/RunState.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace velmorak {

/// A pass over rows that can be divided.
struct PassOutline {
    std::vector<std::size_t> targets;
    std::vector<std::size_t> needs;  ///< Earlier passes whose results its plug-ins need.
    unsigned round = 1;
};

struct RunOutline {
    std::vector<bool> isNeeded;  ///< By node.
    std::vector<PassOutline> passes;
    std::map<std::size_t, std::string> leftToMerge;  ///< Reason by target, of those that need all rows at once.
};

/// Finds the passes of a run whose plug-ins all succeed, without reading or computing anything.
/// @param state of a run that has not begun; used up.
RunOutline outlinePasses(RunState& state);

}  // namespace velmorak
