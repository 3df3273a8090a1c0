#pragma once

#include <root/write/Packing.h>

#include <cstddef>
#include <filesystem>

namespace velmorak::bench {

/// A tree "events" of our own writer.
struct TreeShape {
    std::size_t rows = 0;
    std::size_t columns = 0;      ///< Of reals, "c0", "c1" ...
    std::size_t listColumns = 0;  ///< Of lists of 0 to 7 reals, "l0", "l1" ...
    root::Packing packing = root::Packing::Zstd;
};

/// Writes measured quantities: reals of limited precision, which compress as real data do.
void writeTree(const std::filesystem::path& file, const TreeShape& shape);

}  // namespace velmorak::bench
