#pragma once

#include <velmorak/Table.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// Kernels that read whole lists and make lists, or positions in lists, of other lengths.
namespace velmorak::expression {

/// A value that a list kernel reads.
struct ListInput {
    const void* values = nullptr;  ///< Of double, std::int64_t, std::uint8_t or const std::string*.
    /// As in KernelArgs; null for a single value in each row.
    const std::uint64_t* offsets = nullptr;

    std::uint64_t begin(std::size_t row) const { return offsets ? offsets[row] - offsets[0] : row; }
    std::uint64_t count(std::size_t row) const { return offsets ? offsets[row + 1] - offsets[row] : 1; }
};

struct ListArgs {
    ListInput in[4];
    std::size_t rows = 0;
    std::size_t width = 1;                          ///< Values in each element of in[0].
    std::size_t secondWidth = 1;                    ///< Values in each element of in[1].
    std::vector<std::uint64_t>* offsets = nullptr;  ///< Of the lists made; null if they are as long as existing ones.
    std::vector<std::byte>* out = nullptr;          ///< Grown by the kernel.
    std::uint64_t* combinationsLeft = nullptr;
};

/// @return false if there are more combinations than are left.
using ListKernel = bool (*)(const ListArgs&);

/// @name Positions in a list, counted from 0, as std::int64_t
/// @{
bool whereTrue(const ListArgs& args);         ///< in[0]: booleans.
bool slicePositions(const ListArgs& args);    ///< in[0]: any list; in[1], in[2]: reals, negative from the end.
bool reversePositions(const ListArgs& args);  ///< As many as the list has.
/// Positions of the values in ascending order, NaN last; equal values keep their order.
ListKernel orderKernel(ColumnType type);
/// Positions of the first of equal values. NaN equals NaN.
ListKernel uniqueKernel(ColumnType type);
/// Combinations of different positions in a list, in ascending order: two or three values in each element.
bool pairPositions(const ListArgs& args);
bool triplePositions(const ListArgs& args);
/// Each position in in[0] with each in in[1]: two values in each element.
bool crossPositions(const ListArgs& args);
/// For each (eta, phi) of in[0], in[1] the position of the nearest in in[2], in[3]; -1 if there is none.
bool nearestPositions(const ListArgs& args);
/// @}

/// The values of in[0] at the positions in in[1]; outside of the list NaN, 0, false or an empty text.
/// @param position Integer or Real.
ListKernel gatherKernel(ColumnType type, ColumnType position);
/// The values of the element of in[0] at the real position in in[1], as a list; none outside of the list.
ListKernel combinationKernel(ColumnType type);
/// The values of in[0], then those of in[1].
ListKernel concatKernel(ColumnType type);

}  // namespace velmorak::expression
