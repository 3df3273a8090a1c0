#pragma once

#include <cstddef>
#include <cstdint>

/// Kernels that fill histograms with vector instructions that not every processor has. This header is compiled for
/// those too, so it must not define functions.
namespace velmorak {

/// A slice of an axis, which is narrower than every bin: the first edge in it or above it, and the number of edges
/// below.
struct SliceStart {
    double stop = 0.0;
    std::uint64_t position = 0;
};

/// Finds the cell of x on an axis with bins of different widths: the slice at (x - low) * perUnit, clamped to 0 and
/// last and rounded down, gives the cell, or the one before it.
struct AxisSlices {
    const SliceStart* starts = nullptr;
    double low = 0.0;
    double perUnit = 0.0;
    double last = 0.0;
};

}  // namespace velmorak

namespace velmorak::filling {

/// Finds the cell of x on an axis with bins of equal width without a table: (x - shifted) * perUnit, clamped to 0 and
/// top and rounded to the nearest integer. If it is farther from that than bound, x is so close to an edge that
/// rounding errors matter.
struct Steps {
    double shifted = 0.0;
    double perUnit = 0.0;
    double top = 0.0;
    double bound = 0.0;
};

/// Layout of a cell of one quantity, in order: w, ww, first, second, the entries as std::int64_t, the pivot; of two: w,
/// ww, the firsts of x and y, the seconds xx, xy and yy, the entries, the pivots of x and y. Pairs of sums lie at
/// multiples of 16 bytes.
inline constexpr std::size_t lineCellBytes = 64;
inline constexpr std::size_t lineEntriesAt = 32;
inline constexpr std::size_t linePivotAt = 40;
inline constexpr std::size_t planeCellBytes = 80;
inline constexpr std::size_t planeSecondsAt = 32;
inline constexpr std::size_t planeEntriesAt = 56;
inline constexpr std::size_t planePivotAt = 64;
/// The pivot of a cell is chosen before its first entry and whenever the number of entries is a multiple of this: so
/// rarely that it costs nothing, and often enough that the variance loses at most a few bits when the mean drifts, or
/// the first entry is far from all others.
inline constexpr std::int64_t pivotInterval = 4096;
/// Limit of the low bits of a rounded number.
inline constexpr std::size_t maxCells = std::size_t{1} << 25U;

/// Entries to fill; weights is null if each is 1.
struct Entries {
    const double* x = nullptr;
    const double* y = nullptr;  ///< Null for one quantity.
    const double* weights = nullptr;
    std::size_t count = 0;
};

/// The known cells of entries, numbered along each axis.
struct Cells {
    const std::uint32_t* x = nullptr;
    const std::uint32_t* y = nullptr;  ///< Null in one dimension.
};

/// Each kernel fills entries in order, bit-identical to scalar filling, and stops before the first group with an entry
/// that needs the scalar path: a coordinate or value that is not finite, a coordinate too close to an edge, a NaN
/// weight, or fewer entries than a group.
/// @param stride number of cells from one row to the next in two dimensions.
struct Kernels {
    std::size_t group = 0;  ///< Entries that are filled at once.
    std::size_t (*fill1D)(const Steps& axis, std::byte* cells, const Entries& entries) = nullptr;
    std::size_t (*fillBySlice1D)(const AxisSlices& axis, std::byte* cells, const Entries& entries) = nullptr;
    std::size_t (*fillFromIndices1D)(const Cells& known, std::byte* cells, const Entries& entries) = nullptr;
    std::size_t (*fill2D)(const Steps (&axes)[2], std::size_t stride, std::byte* cells,
                          const Entries& entries) = nullptr;
    std::size_t (*fillFromIndices2D)(const Cells& known, std::size_t stride, std::byte* cells,
                                     const Entries& entries) = nullptr;
    /// The cells of a profile along x; y is the profiled value.
    std::size_t (*fillProfile)(const Steps& axis, std::byte* cells, const Entries& entries) = nullptr;
    std::size_t (*fillProfileFromIndices)(const Cells& known, std::byte* cells, const Entries& entries) = nullptr;
};

/// Choose the pivot of a cell of one or two quantities before the fill at x, or at x and y.
void chooseLinePivot(std::byte* cell, double x);
void choosePlanePivot(std::byte* cell, double x, double y);

/// Fill a cell of one or two quantities, with the pivot where it is due.
void fillLineCell(std::byte* cell, double x, double weight);
void fillPlaneCell(std::byte* cell, double x, double y, double weight);

/// Need AVX2.
Kernels avx2Kernels();
/// Need AVX-512 with its extensions DQ and VL.
Kernels avx512Kernels();

}  // namespace velmorak::filling
