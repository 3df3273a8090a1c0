#pragma once

#include <velmorak/Table.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <vector>

namespace velmorak::numpy {

/// What must be known of a column before its first value can be written.
struct ColumnExtent {
    std::uint64_t values = 0;
    std::uint64_t characters = 0;  ///< Of the longest text.
    std::uint64_t shortestList = ~std::uint64_t{0};
    std::uint64_t longestList = 0;
};

/// Rows that wait in a file of their own until all are there: the header of an array says how many rows it has, and how
/// long the longest text is.
/// Threads: one at a time.
class RowStore {
public:
    /// @param path of the file, which is written anew. @throws Failure if that is impossible.
    RowStore(std::filesystem::path path, Schema schema);

    /// @throws Failure if the rows cannot be stored.
    void append(const std::vector<ColumnPtr>& columns, std::size_t rows);

    const Schema& schema() const { return types; }
    std::uint64_t rows() const { return rowCount; }
    const ColumnExtent& extent(std::size_t column) const { return extents[column]; }
    /// Number of calls of append with rows.
    std::size_t blocks() const { return stored.size(); }
    std::size_t rowsIn(std::size_t block) const { return stored[block].rows; }
    /// A column of a block as it was appended. @throws Failure if it cannot be read.
    Column read(std::size_t block, std::size_t column);

private:
    struct StoredColumn {
        std::uint64_t position = 0;
        std::uint64_t values = 0;
    };
    struct Block {
        std::size_t rows = 0;
        std::vector<StoredColumn> columns;
    };

    void write(const Column& column);
    void writeBytes(const void* bytes, std::size_t count);
    template <typename Number>
    std::vector<Number> readNumbers(std::uint64_t count);
    Column::Texts readTexts(std::uint64_t count);

    const std::filesystem::path name;
    const Schema types;
    std::fstream file;
    std::uint64_t end = 0;  ///< Of what has been written.
    std::uint64_t rowCount = 0;
    std::vector<ColumnExtent> extents;
    std::vector<Block> stored;
};

}  // namespace velmorak::numpy
