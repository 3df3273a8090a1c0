#pragma once

#include <cstddef>
#include <vector>

namespace velmorak {

/// The cycles of a graph: its strongly connected components that are more than a node without a way back to itself.
/// Found as by Tarjan (SIAM J. Comput. 1, 146, 1972), in linear time and without recursion.
/// @param next by node: where its edges lead.
/// @param isAsked by node: only these, and edges between them, count.
/// @return the nodes of each, in ascending order.
std::vector<std::vector<std::size_t>> cyclesOf(const std::vector<std::vector<std::size_t>>& next,
                                               const std::vector<bool>& isAsked);

}  // namespace velmorak
