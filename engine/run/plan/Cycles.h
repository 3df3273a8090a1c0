#pragma once

#include "run/StopPoll.h"

#include <cstddef>
#include <vector>

namespace velmorak {

/// Finds the cycles of a graph: the strongly connected components that have an edge, by Tarjan's algorithm (SIAM J.
/// Comput. 1, 146, 1972) in linear time and without recursion.
/// @param next by node: the nodes that its edges lead to.
/// @param isIncluded by node: other nodes, and their edges, are ignored.
/// @return the nodes of each cycle, in ascending order.
/// @throws Stopped
std::vector<std::vector<std::size_t>> findCycles(const std::vector<std::vector<std::size_t>>& next,
                                                 const std::vector<bool>& isIncluded, StopPoll& poll);

}  // namespace velmorak
