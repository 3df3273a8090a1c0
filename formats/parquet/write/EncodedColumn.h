#pragma once

#include "parquet/Metadata.h"

#include <velmorak/Table.h>

#include <string>

namespace velmorak::parquet {

/// The pages of a column in a row group, as they are in the file, and what the footer says of them.
struct EncodedColumn {
    std::string bytes;
    std::size_t unpackedBytes = 0;
    std::size_t dictionaryBytes = 0;  ///< Of the dictionary's page, which comes first; 0 without one.
    std::int64_t values = 0;          ///< With places of empty lists.
    std::int64_t empty = 0;           ///< Number of empty lists.
    std::optional<std::string> low;   ///< Smallest and largest value, if there is one and it is short.
    std::optional<std::string> high;
};

/// Rows in each page but the last one.
inline constexpr std::size_t pageRows = chunkRows;

/// Encodes the rows of a row group: with a dictionary if that makes them clearly shorter, compressed with zstd, and
/// with checksums.
EncodedColumn encodeColumn(const Column& column, std::size_t rows);

}  // namespace velmorak::parquet
