#pragma once

#include "histogram/fill/Kernels.h"

#include <velmorak/CellSums.h>

#include <cmath>

/// The arithmetic of sums about a pivot. Sources that include it are compiled without contraction of products and sums,
/// so that the bits do not depend on the processor.
namespace velmorak {

/// Chooses the pivot of a cell before the fill at x. Due when the number of entries is a multiple of pivotInterval.
template <std::size_t quantities>
void choosePivot(CellSums<quantities>& sums, const std::array<double, quantities>& x);

extern template void choosePivot(CellSums<1>& sums, const std::array<double, 1>& x);
extern template void choosePivot(CellSums<2>& sums, const std::array<double, 2>& x);
extern template void choosePivot(CellSums<3>& sums, const std::array<double, 3>& x);

template <std::size_t quantities>
void fillCell(CellSums<quantities>& sums, const std::array<double, quantities>& x, double weight) {
    if (sums.entries % filling::pivotInterval == 0) {
        choosePivot(sums, x);
    }
    ++sums.entries;
    sums.w += weight;
    sums.ww += weight * weight;
    std::array<double, quantities> distance{};
    for (std::size_t i = 0; i < quantities; ++i) {
        distance[i] = x[i] - sums.pivot[i];
    }
    std::size_t pair = 0;
    for (std::size_t i = 0; i < quantities; ++i) {
        const double weighted = weight * distance[i];
        sums.first[i] += weighted;
        for (std::size_t j = i; j < quantities; ++j) {
            sums.second[pair++] += weighted * distance[j];
        }
    }
}

/// Adds up the sums of several cells about a common pivot, the mean of their pivots. Call count for each cell, and then
/// add.
template <std::size_t quantities>
class CellTotal {
public:
    using Sums = CellSums<quantities>;

    void count(const Sums& cell);
    void add(const Sums& cell);
    const Sums& result() const { return total; }

private:
    void fixPivot();

    Sums total;
    std::array<double, quantities> distances{};  ///< Sum of entries times the distance from the first pivot.
    std::int64_t counted = 0;
    bool isFirst = true;
    bool isPivotFixed = false;
};

extern template class CellTotal<1>;
extern template class CellTotal<2>;
extern template class CellTotal<3>;

}  // namespace velmorak
