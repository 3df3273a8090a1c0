#pragma once

#include <velmorak/Table.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace velmorak {

/// Rows in a temporary file, in the system's folder for such files ($TMPDIR, or /tmp). The file has no name: the system
/// frees it with this object, and also when the process is killed.
/// Threads: append by one at a time; read by any number, for rows that have been appended.
class ChunkFile {
public:
    /// Where some rows are in the file.
    struct Place {
        std::uint64_t offset = 0;
        std::uint64_t bytes = 0;
        std::size_t rows = 0;
    };

    /// @throws Failure with the reason of the system if the file cannot be created.
    ChunkFile();
    ~ChunkFile();
    ChunkFile(const ChunkFile&) = delete;
    ChunkFile& operator=(const ChunkFile&) = delete;

    /// @param columns of these rows; null ones stay null.
    /// @throws Failure with the reason of the system, for example that no space is left.
    Place append(const std::vector<ColumnPtr>& columns, std::size_t rows);
    /// @return the columns as they were appended, to the last bit.
    /// @throws Failure if the file cannot be read.
    std::vector<ColumnPtr> read(const Place& place) const;

    /// Of all rows.
    std::uint64_t bytes() const { return end; }

private:
    int file = -1;
    std::uint64_t end = 0;
};

}  // namespace velmorak
