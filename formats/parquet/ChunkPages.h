#pragma once

#include "parquet/Page.h"

namespace velmorak::parquet {

/// Where the pages of a column in a row group are, and its dictionary.
struct ChunkPages {
    std::vector<PageSpot> pages;
    std::shared_ptr<const Column> dictionary;  ///< Null if there is none.

    std::size_t bytes() const;
};

/// Reads the headers of the pages.
/// @param type of the dictionary's values; nothing if they are not needed.
/// @throws Failure if the pages are damaged or have other rows than the row group.
ChunkPages findPages(const columnar::FileBytes& file, const Leaf& leaf, const ColumnChunk& chunk, std::uint64_t rows,
                     std::optional<ColumnType> type);

}  // namespace velmorak::parquet
