#pragma once

#include <velmorak/ChunkSize.h>
#include <velmorak/Table.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace velmorak {

/// Reads a table from front to back.
/// Threads: one at a time, except for complete.
class TableReader {
public:
    virtual ~TableReader() = default;
    virtual const Schema& schema() const = 0;
    /// Called once, before the first next. A column that is not needed may be left out: its place in a chunk is null.
    /// The rows of each chunk are the same nevertheless, and so are all results.
    /// @param needed by column of schema().
    virtual void selectColumns(const std::vector<bool>& /*needed*/) {}
    /// Fills the next chunk with rowsInChunk(schema()) rows, fewer at the end and where ChunkSize.h limits the bytes.
    /// The run sets number and firstRow. A reader of several files sets file: it never falls, and the rows of a chunk
    /// come from one file, so that the last chunk of each file may have fewer rows.
    /// @return false if there are no more rows; the chunk then has none.
    virtual bool next(Chunk& chunk) = 0;
    /// Number of files that the rows come from, one after the other; at least 1, which is right for any other table.
    /// The states of accumulators are merged within each file first, so that they do not depend on the other files.
    virtual std::uint64_t fileCount() const { return 1; }
    /// Rows of a full chunk of the file that next reads: rowsInChunk(schema()), except for a reader of several files,
    /// where a file that has other columns has other chunks.
    virtual std::size_t rowsPerChunk() const { return rowsInChunk(schema()); }
    /// Second stage of a reader whose next sets only the number of rows: computes the columns of a chunk from its
    /// file, number and firstRow. Not called for a chunk that no consumer needs. Sets rows to 0 if the chunk cannot be
    /// read and the run is to go on without it.
    /// Threads: several at once for different chunks, also while next produces later ones.
    virtual void complete(Chunk& /*chunk*/) const {}
    /// Progress from 0 to 1, by bytes or rows; no value if unknown.
    virtual std::optional<double> fraction() const { return std::nullopt; }
};

}  // namespace velmorak
