#pragma once

#include <cstddef>
#include <cstdint>

/// Loops that fill histograms with vectors wider than any processor of the family has. What is included here is
/// compiled for those too, so it must bring no function along.
namespace velmorak::filling {

/// How to find the cell of x on an axis of equal bins without a table: (x - shifted) * perUnit, at least 0 and at most
/// top, is rounded to the nearest whole number. Where it lies further from that than bound, an edge may be too near for
/// rounding errors.
struct Steps {
    double shifted = 0.0;
    double perUnit = 0.0;
    double top = 0.0;
    double bound = 0.0;
};

/// Bytes from one cell to the next. A cell holds its entries as an std::int64_t, then its sums as doubles: w, ww, and
/// along one axis wx, wxx; along two wx, wy, wxx, wyy.
inline constexpr std::size_t cellBytes = 64;
/// More could not be told apart in the low bits of a rounded number.
inline constexpr std::size_t maxCells = std::size_t{1} << 25U;

/// The entries that are filled, from the first one on; weights is null for a weight of 1 each.
struct Entries {
    const double* x = nullptr;
    const double* y = nullptr;  ///< Null on a line.
    const double* weights = nullptr;
    std::size_t count = 0;
};

/// The cells of the entries where they are known; those of y are numbered along their own axis.
struct Cells {
    const std::uint32_t* x = nullptr;
    const std::uint32_t* y = nullptr;  ///< Null on a line.
};

/// Entries that are filled together.
inline constexpr std::size_t group = 4;

/// Each fills entries in their order, with the bits of one after the other, and ends before the first group of which
/// one cannot be filled so: a coordinate that is not finite or near an edge, a weight that is NaN, too few for a
/// vector.
/// @param cells stand at cellBytes from each other.
/// @param stride cells from one row of a plane to the next.
/// @return how many entries were filled.
struct Kernels {
    std::size_t (*line)(const Steps& axis, std::byte* cells, const Entries& entries) = nullptr;
    std::size_t (*fillFromIndices1D)(const Cells& known, std::byte* cells, const Entries& entries) = nullptr;
    std::size_t (*plane)(const Steps (&axes)[2], std::size_t stride, std::byte* cells,
                         const Entries& entries) = nullptr;
    std::size_t (*listedPlane)(const Cells& known, std::size_t stride, std::byte* cells,
                               const Entries& entries) = nullptr;
};

/// Those for AVX2, which the processor must have to run them.
Kernels avx2Kernels();

}  // namespace velmorak::filling
