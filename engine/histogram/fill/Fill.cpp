#include "histogram/fill/Fill.h"

#include "histogram/CellArithmetic.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace velmorak::filling {

std::optional<Steps> stepsOf(const Axis& axis) {
    const auto bins = static_cast<double>(axis.bins());
    const double span = axis.high() - axis.low();
    const double perUnit = bins / span;
    if (!axis.isRegular() || axis.bins() + 2 > maxCells || !std::isfinite(bins * span) || !std::isnormal(perUnit)) {
        return std::nullopt;
    }
    // A value and an edge are each rounded a few times, by half a unit in the last place: of a number of steps, or of a
    // coordinate. Together at most 8 * bins + 10 + 2 * bins * largest / span such halves; four times that is safe.
    const double largest = std::max(std::abs(axis.low()), std::abs(axis.high()));
    const double halfUnit = std::numeric_limits<double>::epsilon() / 2;
    const double uncertainty = 40 * halfUnit * (bins * (1 + largest / span) + 1);
    constexpr double maxUncertain = 0.25;
    if (!(uncertainty < maxUncertain)) {
        return std::nullopt;
    }
    // Near the lowest double, half a bin below the axis is not representable.
    const double shifted = axis.low() - 0.5 / perUnit;
    if (!std::isfinite(shifted)) {
        return std::nullopt;
    }
    return Steps{.shifted = shifted, .perUnit = perUnit, .top = bins + 1, .bound = 0.5 - uncertainty};
}

const Kernels* bestKernels(std::size_t cells) {
    static const std::vector<Kernels> runnable = runnableKernels();
    return runnable.empty() || cells > maxCells ? nullptr : &runnable.front();
}

void chooseLinePivot(std::byte* cell, double x) {
    choosePivot(*reinterpret_cast<CellSums<1>*>(cell), {x});
}

void choosePlanePivot(std::byte* cell, double x, double y) {
    choosePivot(*reinterpret_cast<CellSums<2>*>(cell), {x, y});
}

void fillLineCell(std::byte* cell, double x, double weight) {
    fillCell(*reinterpret_cast<CellSums<1>*>(cell), {x}, weight);
}

void fillPlaneCell(std::byte* cell, double x, double y, double weight) {
    fillCell(*reinterpret_cast<CellSums<2>*>(cell), {x, y}, weight);
}

}  // namespace velmorak::filling
