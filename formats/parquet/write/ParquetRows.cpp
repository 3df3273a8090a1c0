#include "parquet/write/ParquetRows.h"

#include "columnar/Columns.h"
#include "columnar/Parallel.h"

#include <velmorak/ChunkSize.h>

#include <algorithm>
#include <utility>

namespace velmorak::parquet {
namespace {

/// Rows in a group: enough for good compression, few enough that several are in memory at once.
constexpr std::size_t groupRows = 4 * pageRows;

std::vector<Column> emptyColumns(const Schema& schema) {
    std::vector<Column> columns;
    for (const ColumnInfo& info : schema.columns()) {
        columns.push_back(columnar::emptyColumn(info.type, info.isList));
    }
    return columns;
}

/// Bytes of the values [first, last).
std::size_t bytesBetween(const Column& column, std::size_t first, std::size_t last) {
    if (column.type() != ColumnType::Text) {
        return (last - first) * sizeof(double);
    }
    std::size_t bytes = 0;
    for (std::size_t i = first; i < last; ++i) {
        bytes += column.texts()[i].size() + sizeof(std::string);
    }
    return bytes;
}

std::size_t bytesInRowOf(const std::vector<ColumnPtr>& columns, std::size_t row) {
    std::size_t bytes = 0;
    for (const ColumnPtr& column : columns) {
        const bool isList = column->isList();
        bytes +=
            bytesBetween(*column, isList ? column->offsets[row] : row, isList ? column->offsets[row + 1] : row + 1);
    }
    return bytes;
}

}  // namespace

ParquetRows::ParquetRows(Schema rowSchema, std::function<void(const std::string&)> write)
    : schema(std::move(rowSchema)),
      write(std::move(write)),
      maxRows(std::clamp<std::size_t>(maxChunkBytes / std::max<std::size_t>(bytesInRow(schema), 1), 1, groupRows)),
      hasVariableWidth(
          std::any_of(schema.columns().begin(), schema.columns().end(),
                      [](const ColumnInfo& info) { return info.isList || info.type == ColumnType::Text; })),
      kept(emptyColumns(schema)) {}

/// @return how many rows from first on belong to the group that is being filled; at least one.
std::size_t ParquetRows::rowsThatFit(const std::vector<ColumnPtr>& columns, std::size_t first, std::size_t rows) {
    const std::size_t most = std::min(rows - first, maxRows - keptRows);
    if (!hasVariableWidth) {
        return most;
    }
    std::size_t count = 0;
    while (count < most && keptBytes < maxChunkBytes) {
        keptBytes += bytesInRowOf(columns, first + count);
        ++count;
    }
    return count;
}

void ParquetRows::append(const std::vector<ColumnPtr>& columns, std::size_t rows) {
    for (std::size_t first = 0; first < rows;) {
        const std::size_t last = first + rowsThatFit(columns, first, rows);
        for (std::size_t i = 0; i < columns.size(); ++i) {
            if (columns[i]->isList()) {
                columnar::appendLists(*columns[i], first, last, kept[i]);
            } else {
                columnar::appendValues(*columns[i], first, last, kept[i]);
            }
        }
        keptRows += last - first;
        first = last;
        if (keptRows == maxRows || keptBytes >= maxChunkBytes) {
            writeGroup();
        }
    }
}

void ParquetRows::writeBytes(const std::string& bytes) {
    if (position == 0) {
        position = 4;
        write("PAR1");
    }
    write(bytes);
    position += bytes.size();
}

void ParquetRows::writeGroup() {
    std::vector<EncodedColumn> encoded(kept.size());
    columnar::inParallel(kept.size(), [&](std::size_t i) { encoded[i] = encodeColumn(kept[i], keptRows); });
    WrittenGroup group{keptRows, {}};
    for (EncodedColumn& column : encoded) {
        const std::string bytes = std::exchange(column.bytes, {});
        writeBytes(bytes);
        group.chunks.push_back({std::move(column), position - bytes.size(), bytes.size()});
    }
    groups.push_back(std::move(group));
    kept = emptyColumns(schema);
    keptRows = 0;
    keptBytes = 0;
}

void ParquetRows::finish() {
    if (keptRows > 0) {
        writeGroup();
    }
    writeBytes(footerOf(schema, groups));
}

}  // namespace velmorak::parquet
