#pragma once

#include "Target.h"

#include <velmorak/Kind.h>

namespace velmorak::fuzz {

/// Reads a table to its end and checks that each chunk matches the schema.
inline void readTable(TableReader& reader) {
    Chunk chunk;
    std::uint64_t rows = 0;
    while (reader.next(chunk)) {
        require(chunk.rows > 0 && chunk.rows <= chunkRows, "a chunk has rows, and no more than it may");
        chunk.firstRow = rows;
        rows += chunk.rows;
        reader.complete(chunk);
        require(chunk.rows == 0 || chunk.columns.size() == reader.schema().size(),
                "a chunk has the columns of its schema");
        for (std::size_t i = 0; i < chunk.columns.size(); ++i) {
            const Column& column = *chunk.columns[i];
            const ColumnInfo& info = reader.schema()[i];
            require(column.type() == info.type && column.isList() == info.isList, "a column has its type");
            require(column.isList()
                        ? column.offsets.size() == chunk.rows + 1 && column.offsets.back() == column.valueCount()
                        : column.valueCount() == chunk.rows,
                    "a column has a value for each row");
        }
        chunk = {};
    }
}

}  // namespace velmorak::fuzz
