#pragma once

#include "root/tree/Tree.h"

namespace velmorak::root {

/// Decodes the numbers of several entries that are contiguous.
/// @param first, last entries of the basket, counted from its first one.
/// @return false, with nothing done, if the column's values are not contiguous.
bool decodeAtOnce(const TreeColumn& column, const Basket& basket, std::uint64_t first, std::uint64_t last,
                  Column& target);

}  // namespace velmorak::root
