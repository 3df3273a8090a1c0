#pragma once

#include <velmorak/CellSums.h>

#include <algorithm>

/// Sums about 0 without a sum of w x y, as files of earlier versions have them.
namespace velmorak::io {

/// Sets the sums of w x y about 0 for which there is no correlation within the cell.
template <std::size_t quantities>
void setUncorrelated(CellSums<quantities>& sums) {
    for (std::size_t i = 0; i < quantities; ++i) {
        for (std::size_t j = i + 1; j < quantities; ++j) {
            sums.second[sums.pairOf(i, j)] = sums.w == 0.0 ? 0.0 : sums.first[i] * sums.first[j] / sums.w;
        }
    }
}

/// The cells come from such a file, so that they are written in the same way.
template <std::size_t quantities>
bool arePlain(const CellVector<CellSums<quantities>>& cells) {
    return std::all_of(cells.begin(), cells.end(), [](const CellSums<quantities>& sums) {
        CellSums<quantities> plain = sums;
        setUncorrelated(plain);
        return plain == sums && sums.pivot == typename CellSums<quantities>::Point{};
    });
}

}  // namespace velmorak::io
