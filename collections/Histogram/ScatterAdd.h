#pragma once

#include <velmorak/CellVector.h>

#include <cstddef>
#include <vector>

namespace velmorak {

/// Adds old cell i to cell target[i] of count new ones, in the order of the old cells.
template <typename Sums>
CellVector<Sums> scatterAdd(const CellVector<Sums>& cells, const std::vector<std::size_t>& target, std::size_t count) {
    CellVector<Sums> all(count);
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (!isZero(cells[i])) {
            all[target[i]].add(cells[i]);
        }
    }
    return all;
}

}  // namespace velmorak
