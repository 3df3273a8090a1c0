#pragma once

#include <velmorak/Table.h>

#include <cstddef>

/// How large the chunks of a table are: in rows, and where rows are wide or texts long, in bytes.
namespace velmorak {

/// What the chunks of a wide table are kept to, and the most that a single row may take.
inline constexpr std::size_t maxChunkBytes = std::size_t{64} << 20U;

/// @return rows in each chunk of a table with these columns: chunkRows, and where so many could take more than
///         maxChunkBytes before any text or list is counted, as often halved as is needed; at least 1.
std::size_t rowsInChunk(const Schema& schema);

/// @return bytes that a row takes before any text or list is counted.
std::size_t bytesInRow(const Schema& schema);

/// @return bytes that the values take, texts with their characters. A source ends a chunk where all columns together
///         have maxChunkBytes, also when it could have more rows.
std::size_t bytesIn(const Column& column);

}  // namespace velmorak
