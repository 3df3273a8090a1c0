#pragma once

#include "parquet/write/EncodedColumn.h"

#include <vector>

namespace velmorak::parquet {

/// A row group that has been written.
struct WrittenGroup {
    struct Chunk {
        EncodedColumn column;        ///< Without its bytes.
        std::uint64_t position = 0;  ///< Of its first page in the file.
        std::size_t bytes = 0;
    };

    std::size_t rows = 0;
    std::vector<Chunk> chunks;
};

/// @return what follows the last row group: the description of the file, its length, and the mark at the end.
std::string footerOf(const Schema& schema, const std::vector<WrittenGroup>& groups);

}  // namespace velmorak::parquet
