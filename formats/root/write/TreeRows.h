#pragma once

#include "root/write/Packing.h"
#include "root/write/TreeLayout.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Rows of a table on their way into the baskets of a tree. Many rows become compressed baskets at once, on any thread;
/// few rows remain as they are until there are enough of them.
namespace velmorak::root {

/// The values of some entries of a branch, as a basket holds them before compression.
struct BranchValues {
    std::string bytes;
    std::vector<std::uint32_t> starts;  ///< Of each entry in the bytes; empty unless entries are of variable length.
    std::int32_t largest = 0;           ///< Length of a list; of a text with its terminating zero.

    void append(const BranchValues& next);
};

/// A compressed basket.
struct PackedBasket {
    std::string bytes;
    std::uint32_t contentBytes = 0;  ///< Before compression.
    std::uint32_t border = 0;        ///< Bytes of the values, which the places of the entries follow.
    std::int32_t largest = 0;
};

/// @param headBytes of the basket's record, from which the places of entries count.
PackedBasket packBasket(const BranchValues& values, std::size_t headBytes, Packing packing);

/// Consecutive rows: values for each branch of a layout, or baskets.
struct TreeRows {
    std::uint32_t rows = 0;
    std::vector<BranchValues> values;
    std::vector<PackedBasket> baskets;  ///< Instead of the values.

    std::size_t bytes() const;
    bool isEnough(const TreeLayout& layout) const;
    /// Makes baskets of the values.
    void pack(const TreeLayout& layout, Packing packing);
    void append(const TreeRows& next);
};

/// @throws Failure for a text that a tree cannot hold.
TreeRows treeRowsOf(const TreeLayout& layout, const Chunk& chunk);

/// Rows as bytes that can be concatenated, and back.
std::string bytesOfRows(const TreeRows& rows);
/// @param bytes begin after the rows that are taken from them.
/// @throws Failure if the bytes are damaged.
TreeRows takeRows(std::string_view& bytes, const TreeLayout& layout);

}  // namespace velmorak::root
