#pragma once

#include <cstddef>
#include <cstdint>

/// Kernels that fill histograms with vector instructions that not every processor has. This header is compiled for
/// those too, so it must not define functions.
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

/// Size of a cell: its entries as std::int64_t, then doubles w, ww, and in one dimension wx, wxx; in two wx, wy, wxx,
/// wyy.
inline constexpr std::size_t cellBytes = 64;
/// Limit of the low bits of a rounded number.
inline constexpr std::size_t maxCells = std::size_t{1} << 25U;

/// Entries to fill; weights is null if each is 1.
struct Entries {
    const double* x = nullptr;
    const double* y = nullptr;  ///< Null in one dimension.
    const double* weights = nullptr;
    std::size_t count = 0;
};

/// The known cells of entries, numbered along each axis.
struct Cells {
    const std::uint32_t* x = nullptr;
    const std::uint32_t* y = nullptr;  ///< Null in one dimension.
};

/// Entries that a kernel fills at once.
inline constexpr std::size_t group = 4;

/// Each kernel fills entries in order, bit-identical to scalar filling, and stops before the first group with an entry
/// that needs the scalar path: a coordinate that is not finite or too close to an edge, a NaN weight, or fewer entries
/// than a group.
/// @param cells cellBytes each.
/// @param stride number of cells from one row to the next in two dimensions.
/// @return the number of entries filled.
struct Kernels {
    std::size_t (*fill1D)(const Steps& axis, std::byte* cells, const Entries& entries) = nullptr;
    std::size_t (*fillFromIndices1D)(const Cells& known, std::byte* cells, const Entries& entries) = nullptr;
    std::size_t (*fill2D)(const Steps (&axes)[2], std::size_t stride, std::byte* cells,
                          const Entries& entries) = nullptr;
    std::size_t (*fillFromIndices2D)(const Cells& known, std::size_t stride, std::byte* cells,
                                     const Entries& entries) = nullptr;
};

/// Need AVX2.
Kernels avx2Kernels();

}  // namespace velmorak::filling
