#pragma once

#include <velmorak/CellVector.h>

#include <cstddef>

namespace velmorak {

/// Asks the system for huge pages for memory that is about to be filled at random addresses.
void expectLarge(void* memory, std::size_t bytes);

/// @return cells without entries. Many cells get huge pages, which saves TLB misses when distant cells are filled.
template <typename Sums>
CellVector<Sums> emptyCells(std::size_t count) {
    CellVector<Sums> cells;
    cells.reserve(count);
    expectLarge(cells.data(), count * sizeof(Sums));
    cells.resize(count);
    return cells;
}

}  // namespace velmorak
