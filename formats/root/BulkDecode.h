#pragma once

#include "root/Tree.h"

namespace velmorak::root {

/// Decodes the numbers of several entries that lie one behind the other with nothing in between.
/// @param first, last entries of the basket, counted from its first one.
/// @return false, with nothing done, where the column's values do not lie so.
bool decodeAtOnce(const TreeColumn& column, const Basket& basket, std::uint64_t first, std::uint64_t last,
                  Column& target);

}  // namespace velmorak::root
