#pragma once

#include "parquet/write/Footer.h"

#include <functional>
#include <string>
#include <vector>

namespace velmorak::parquet {

/// Turns the rows of a table into the bytes of a Parquet file. They depend on the rows alone, not on how these are
/// distributed over calls. Columns are encoded on all threads of the run.
/// Threads: one at a time.
class ParquetRows {
public:
    /// @param write takes the bytes of the file in order.
    ParquetRows(Schema schema, std::function<void(const std::string&)> write);

    /// @throws whatever write throws.
    void append(const std::vector<ColumnPtr>& columns, std::size_t rows);
    /// Writes the rest. Nothing can be appended afterwards.
    void finish();

private:
    std::size_t rowsThatFit(const std::vector<ColumnPtr>& columns, std::size_t first, std::size_t rows);
    void writeBytes(const std::string& bytes);
    void writeGroup();

    Schema schema;
    std::function<void(const std::string&)> write;
    std::size_t maxRows;       ///< Of a row group.
    bool hasVariableWidth;     ///< Of rows, because of texts and lists.
    std::vector<Column> kept;  ///< Rows of the next group.
    std::size_t keptRows = 0;
    std::size_t keptBytes = 0;  ///< Counted where rows have no fixed width.
    std::uint64_t position = 0;
    std::vector<WrittenGroup> groups;
};

}  // namespace velmorak::parquet
