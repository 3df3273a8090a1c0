#pragma once

#include "root/container/ByteVector.h"

#include <cstdint>
#include <vector>

namespace velmorak::root {

/// Some entries of a branch as they are in the file, decompressed.
struct Basket {
    std::uint64_t firstEntry = 0;
    std::uint64_t entries = 0;
    ByteVector content;
    /// Where each entry begins, and one more for the end; empty if all entries have the same length.
    std::vector<std::uint32_t> offsets;

    std::uint64_t end() const { return firstEntry + entries; }
    /// @param entry counted from the first entry of the basket; may be `entries`, for the end.
    std::size_t position(std::uint64_t entry) const {
        return offsets.empty() ? entries == 0 ? 0 : entry * (content.size() / entries) : offsets[entry];
    }
};

}  // namespace velmorak::root
