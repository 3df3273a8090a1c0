#pragma once

#include <velmorak/CellVector.h>

#include <cstddef>

namespace velmorak {

/// Tells the system that so much memory is about to be filled all over, so that it gives it in large pages.
void expectLarge(void* memory, std::size_t bytes);

/// @return cells without entries. Where they are many, fills of cells far from each other do not wait for the tables of
///         the system's pages.
template <typename Sums>
CellVector<Sums> emptyCells(std::size_t count) {
    CellVector<Sums> cells;
    cells.reserve(count);
    expectLarge(cells.data(), count * sizeof(Sums));
    cells.resize(count);
    return cells;
}

}  // namespace velmorak
