#pragma once

#include <velmorak/ChunkFile.h>
#include <velmorak/RowMemory.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace velmorak {

/// The columns that a join adds, of all rows of its second table: in memory, or in a temporary file if they are too
/// many.
/// Threads: at may be called by several threads at once.
class JoinRows {
public:
    /// @param infos columns of the rows.
    JoinRows(const std::vector<ColumnInfo>& infos, std::shared_ptr<MemoryBudget> memory);

    /// Adds rows that follow.
    void append(const std::vector<ColumnPtr>& more, std::size_t rows);

    /// @param rows positions, or noRow.
    /// @param wanted by column; the others are null in the result.
    std::vector<ColumnPtr> at(const std::vector<std::uint32_t>& rows, const std::vector<bool>& wanted) const;

private:
    void moveToFile();
    std::vector<ColumnPtr> read(const std::vector<std::uint32_t>& rows, const std::vector<bool>& wanted) const;

    MemoryShare share;
    std::vector<Column> columns;  ///< Of all rows; without rows if they are in the file.
    std::unique_ptr<ChunkFile> file;
    std::vector<ChunkFile::Place> blocks;
    std::vector<std::uint32_t> firstRows;  ///< By block.
    std::uint32_t count = 0;
};

}  // namespace velmorak
