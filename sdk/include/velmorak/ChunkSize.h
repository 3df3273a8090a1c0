#pragma once

#include <velmorak/Table.h>

#include <cstddef>

/// The size of a table's chunks: a number of rows, limited in bytes where rows are wide or texts are long.
namespace velmorak {

/// Upper limit for the chunks of a wide table, and for a single row.
inline constexpr std::size_t maxChunkBytes = std::size_t{64} << 20U;

/// @return rows per chunk of a table with these columns: chunkRows, halved until a chunk fits into maxChunkBytes (texts
///         and lists not counted); at least 1.
std::size_t rowsInChunk(const Schema& schema);

/// @return bytes per row, not counting the contents of texts and lists.
std::size_t bytesInRow(const Schema& schema);

/// @return bytes that the values occupy, including the characters of texts. A source ends a chunk early once its
///         columns together reach maxChunkBytes.
std::size_t bytesIn(const Column& column);

}  // namespace velmorak
