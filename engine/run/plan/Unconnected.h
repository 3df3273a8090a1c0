#pragma once

#include "run/plan/Pipeline.h"

#include <string>
#include <vector>

namespace velmorak {

/// The plug-ins that a run leaves out: neither downstream of the start plug-in, nor upstream of one that is.
std::vector<std::size_t> unconnectedNodes(const Pipeline& pipeline);

/// @return a sentence that names them, at most twenty; empty if there are none.
std::string unconnectedText(const Pipeline& pipeline);

}  // namespace velmorak
